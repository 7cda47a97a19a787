#pragma once
// Owners of the handles that several rooms use.

#include <windows.h>

#include "com/unique_handle.h"

namespace kel::com {

struct FileHandleTraits {
    using Type = HANDLE;
    static Type none() { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) { CloseHandle(handle); }
};
using FileHandle = UniqueHandle<FileHandleTraits>;

struct RegistryKeyTraits {
    using Type = HKEY;
    static Type none() { return nullptr; }
    static void close(Type handle) { RegCloseKey(handle); }
};
using RegistryKeyHandle = UniqueHandle<RegistryKeyTraits>;

}  // namespace kel::com
