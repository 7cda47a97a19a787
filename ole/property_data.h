#pragma once
// The persisted properties of a control as bytes of a stream.

#include <windows.h>

#include <objidl.h>

#include <string>
#include <vector>

#include "com/variant.h"

namespace kel::ole {

enum class PropertyKind : WORD { Flag = 1, Colour = 2, Font = 3 };

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

// The greatest size that a stream can take for them, in bytes.
constexpr ULONG kLargestPropertyData = 0x10000;

}  // namespace kel::ole
