#pragma once
// A place for what dialogs remember while they are measured.

#include <windows.h>

#include "com/error.h"
#include "com/handles.h"

namespace kel::bench {

// The user's settings, empty and for this process alone, as long as it lives.
class EmptySettings {
public:
    EmptySettings() {
        RegCreateKeyExW(HKEY_CURRENT_USER, kPlace, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                        key_.put(), nullptr);
        if (RegOverridePredefKey(HKEY_CURRENT_USER, key_.get()) != ERROR_SUCCESS)
            throw com::Error(E_FAIL, L"there is no place for settings");
    }
    ~EmptySettings() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, kPlace);
    }
    EmptySettings(const EmptySettings&) = delete;
    EmptySettings& operator=(const EmptySettings&) = delete;

private:
    static constexpr wchar_t kPlace[] = L"Software\\KelSpeed";
    com::RegistryKeyHandle key_;
};

}  // namespace kel::bench
