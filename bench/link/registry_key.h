#pragma once
// An open key of the registry.

#include <windows.h>

#include <optional>
#include <string>

#include "com/handles.h"

namespace kel::bench {

// Keys are named by their path below HKEY_CLASSES_ROOT. Failures throw com::Error.
class RegistryKey {
public:
    static RegistryKey create(const std::wstring& path);

    // Removes a key with all that is below it; nothing when there is none.
    static void remove(const std::wstring& path);

    // The default value of a key as a text, with environment variables filled in; nothing when
    // there is no such key or value.
    static std::optional<std::wstring> read(const std::wstring& path);

    // Sets a value; null is the default value's name.
    void set(const wchar_t* name, const std::wstring& text);

private:
    explicit RegistryKey(HKEY key) : key_(key) {}

    com::RegistryKeyHandle key_;
};

}  // namespace kel::bench
