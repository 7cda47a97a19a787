#include "tests/wine/support/registry_sandbox.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "com/error.h"
#include "settings/vocabulary.h"

namespace kel::test {
namespace {

void check(LSTATUS status) {
    if (status != ERROR_SUCCESS) throw com::Error(HRESULT_FROM_WIN32(status));
}

std::string shown(DWORD type, const std::string& bytes) {
    char text[16];
    if (type == REG_SZ && !bytes.empty() && bytes.find('\0') == bytes.size() - 1)
        return "\"" + bytes.substr(0, bytes.size() - 1) + "\"";
    if (type == REG_DWORD && bytes.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, bytes.data(), sizeof number);
        std::snprintf(text, sizeof text, "dword:%08lx", number);
        return text;
    }
    std::string value = "type " + std::to_string(type) + ":";
    for (const char byte : bytes) {
        std::snprintf(text, sizeof text, " %02x", static_cast<unsigned char>(byte));
        value += text;
    }
    return value;
}

// What an enumeration answers. Only its end may end it: a listing never leaves anything out.
bool isThere(LSTATUS status) {
    if (status == ERROR_NO_MORE_ITEMS) return false;
    check(status);
    return true;
}

// What stands below a key.
void addKeys(HKEY key, const std::string& path, std::set<std::string>& listing) {
    char name[300];
    std::vector<char> data(0x10000);
    std::string line = path;
    for (DWORD i = 0;; ++i) {
        DWORD nameSize = sizeof name;
        auto dataSize = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (!isThere(RegEnumValueA(key, i, name, &nameSize, nullptr, &type,
                                   reinterpret_cast<BYTE*>(data.data()), &dataSize)))
            break;
        const std::string value = " = " + shown(type, std::string(data.data(), dataSize));
        if (nameSize == 0) {
            line += value;
        } else {
            listing.insert(path + " : " + name + value);
        }
    }
    listing.insert(line);
    for (DWORD i = 0; isThere(RegEnumKeyA(key, i, name, sizeof name)); ++i) {
        com::RegistryKeyHandle child;
        check(RegOpenKeyA(key, name, child.put()));
        addKeys(child.get(), path.empty() ? name : path + "\\" + name, listing);
    }
}

}  // namespace

RegistrySandbox::RegistrySandbox(HKEY root)
    : root_(root), path_(L"Software\\KelUtilsTests\\" + std::to_wstring(GetCurrentProcessId())) {
    clear();
    check(RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, key_.put(), nullptr));
    check(RegOverridePredefKey(root_, key_.get()));
}

RegistrySandbox::~RegistrySandbox() {
    RegOverridePredefKey(root_, nullptr);
    clear();
}

void RegistrySandbox::clear() const {
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
}

std::set<std::string> RegistrySandbox::listing() const {
    std::set<std::string> lines;
    addKeys(key(), "", lines);
    return lines;
}

void remember(const std::string& section, const std::string& name, const std::string& text) {
    RegSetKeyValueA(HKEY_CURRENT_USER, (settings::kRoot + section).c_str(), name.c_str(), REG_SZ,
                    text.c_str(), static_cast<DWORD>(text.size() + 1));
}

void remember(const std::string& line) {
    const std::size_t equals = line.find(" = ");
    const std::size_t name = line.find(' ');
    const std::string section = line.substr(0, name);
    const std::string value = line.substr(name + 1, equals - name - 1);
    const std::string text = line.substr(equals + 3);
    constexpr std::string_view kNumber = "dword:";
    if (!text.starts_with(kNumber)) return remember(section, value, text);
    const DWORD number = std::stoul(text.substr(kNumber.size()));
    RegSetKeyValueA(HKEY_CURRENT_USER, (settings::kRoot + section).c_str(), value.c_str(),
                    REG_DWORD, &number, sizeof number);
}

}  // namespace kel::test
