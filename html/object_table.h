#pragma once
// What script hosts know of the library's own table of objects, beyond its interface for hosts.

#include <windows.h>

#include <oleauto.h>
#include <wrl/client.h>

#include <string>

namespace kel::html {

// Is told of new names. Lives on the table's thread, and takes itself off before it goes.
class TableListener {
public:
    virtual void nameAdded(const std::wstring& name) = 0;

protected:
    ~TableListener() = default;
};

// Asked from an object table by its identifier; other tables do not have it.
struct ITableSource : IUnknown {
    virtual void addListener(TableListener& listener) = 0;
    virtual void removeListener(TableListener& listener) = 0;
};

}  // namespace kel::html

__CRT_UUID_DECL(kel::html::ITableSource, 0x6B0E6E0A, 0x9C1D, 0x4A6F, 0x8B, 0x56, 0x3D, 0x1B, 0x9D,
                0x0C, 0x7F, 0x21)
