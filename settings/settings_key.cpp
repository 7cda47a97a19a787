#include "settings/settings_key.h"

#include <cstring>

#include "settings/model/stored_list.h"
#include "settings/vocabulary.h"

namespace kel::settings {

SettingsKey::SettingsKey(HKEY parent, const std::string& path, REGSAM access) {
    // What a failing call leaves behind is no key.
    HKEY key = nullptr;
    if (RegCreateKeyExA(parent, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr) ==
        ERROR_SUCCESS)
        key_ = com::RegistryKeyHandle(key);
}

SettingsKey SettingsKey::forReading(const std::string& section) {
    return {HKEY_CURRENT_USER, kRoot + section, KEY_READ};
}

SettingsKey SettingsKey::forWriting(const std::string& section) {
    return {HKEY_CURRENT_USER, kRoot + section, KEY_WRITE};
}

std::optional<std::string> SettingsKey::readText(const char* name) const {
    if (!key_) return std::nullopt;
    char buffer[kLongestText];
    DWORD size = sizeof buffer;
    DWORD type = REG_NONE;
    if (RegQueryValueExA(get(), name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    if (type != REG_SZ) return std::nullopt;
    return textIn({buffer, size});
}

bool SettingsKey::readNumber(const char* name, DWORD& value) const {
    if (!key_) return false;
    DWORD stored = 0;
    DWORD size = sizeof stored;
    DWORD type = REG_NONE;
    if (RegQueryValueExA(get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&stored), &size) !=
            ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof stored)
        return false;
    value = stored;
    return true;
}

bool SettingsKey::writeNumber(const char* name, DWORD value) const {
    return key_ && RegSetValueExA(get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                                  sizeof value) == ERROR_SUCCESS;
}

std::string ReadStringSetting(const std::string& section, const char* name,
                              const std::string& defaultText) {
    return SettingsKey::forReading(section).readText(name).value_or(defaultText);
}

bool WriteStringSetting(const SettingsKey& key, const char* name, const std::string& text) {
    const auto size = static_cast<DWORD>(std::strlen(text.c_str()) + 1);
    return key &&
           RegSetValueExA(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          size) == ERROR_SUCCESS;
}

}  // namespace kel::settings
