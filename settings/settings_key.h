#pragma once
// The store of what dialogs remember for each user. Its failures are silent: what cannot be read
// has its default, what cannot be written is lost. Only std::bad_alloc is thrown.

#include <windows.h>

#include <optional>
#include <string>

#include "com/handles.h"

namespace kel::settings {

// Owns one open key. Used on the dialog's thread and not kept open between calls.
class SettingsKey {
public:
    SettingsKey() = default;
    // A key below another, created when there is none; empty when that fails. `access` is KEY_READ
    // or KEY_WRITE.
    SettingsKey(HKEY parent, const std::string& path, REGSAM access);
    SettingsKey(const SettingsKey& parent, const std::string& path, REGSAM access)
        : SettingsKey(parent.get(), path, access) {}

    // A key of the store, named by its path below the root.
    static SettingsKey forReading(const std::string& section);
    static SettingsKey forWriting(const std::string& section);

    HKEY get() const { return key_.get(); }
    explicit operator bool() const { return static_cast<bool>(key_); }

    // Nothing when there is no such text.
    std::optional<std::string> readText(const char* name) const;

    // False, and `value` as it was, when there is no such number.
    bool readNumber(const char* name, DWORD& value) const;

    // False when it is not written.
    bool writeNumber(const char* name, DWORD value) const;

private:
    com::RegistryKeyHandle key_;
};

// A text of a section; the default where there is none.
std::string ReadStringSetting(const std::string& section, const char* name,
                              const std::string& defaultText);

// Writes a text into an open key. False when it is not written.
bool WriteStringSetting(const SettingsKey& key, const char* name, const std::string& text);

}  // namespace kel::settings
