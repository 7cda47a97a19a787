#pragma once
// The persisted properties of a control in a stream.

#include <windows.h>

#include <objidl.h>

#include <string>
#include <vector>

#include "com/variant.h"
#include "ole/model/property_bytes.h"

namespace kel::ole {

struct NamedProperty {
    std::wstring name;
    PropertyKind kind;
    // A truth value, a number, or an object that offers IFontDisp.
    com::Variant value;
};

// Throws com::Error when the stream does not take them.
void writeProperties(IStream& stream, const std::vector<NamedProperty>& properties);

// Leaves the stream behind what was written there. Leaves out properties whose kind or value is
// none that a control can have. Throws com::Error when the stream ends early or holds something
// else.
std::vector<NamedProperty> readProperties(IStream& stream);

}  // namespace kel::ole
