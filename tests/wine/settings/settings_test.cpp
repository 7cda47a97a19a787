// The store, down to the bytes that it leaves in the registry, and on a registry that refuses;
// settings.txt tells how the cases are written.
#include <cstring>
#include <set>
#include <sstream>
#include <utility>

#include "settings/settings_key.h"
#include "settings/settings_list.h"
#include "settings/vocabulary.h"
#include "tests/support/table.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::settings {
namespace {

// Counts the calls on the registry and refuses one of them. What is patched is this program, whose
// own calls would come here too.
int calls;
int refusedCall;
std::set<HKEY> openKeys;

template <class Function>
Function* platform(const char* name) {
    return test::exportOf<Function>(GetModuleHandleW(L"advapi32.dll"), name);
}

template <class Function, class... Arguments>
LSTATUS pass(const char* name, Arguments... arguments) {
    if (++calls == refusedCall) return ERROR_ACCESS_DENIED;
    return platform<Function>(name)(arguments...);
}

LSTATUS WINAPI create(HKEY key, const char* name, DWORD reserved, char* className, DWORD options,
                      REGSAM access, SECURITY_ATTRIBUTES* security, HKEY* result,
                      DWORD* disposition) {
    EXPECT_EQ(options, 0u);
    EXPECT_TRUE(access == 0x20019 || access == 0x20006) << access;
    EXPECT_TRUE(!className && !security);
    *result = reinterpret_cast<HKEY>(1);
    const LSTATUS status =
        pass<decltype(RegCreateKeyExA)>("RegCreateKeyExA", key, name, reserved, className, options,
                                        access, security, result, disposition);
    if (status == ERROR_SUCCESS) openKeys.insert(*result);
    return status;
}

LSTATUS WINAPI close(HKEY key) {
    openKeys.erase(key);
    return platform<decltype(RegCloseKey)>("RegCloseKey")(key);
}

LSTATUS WINAPI query(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                     DWORD* size) {
    return pass<decltype(RegQueryValueExA)>("RegQueryValueExA", key, name, reserved, type, data,
                                            size);
}

LSTATUS WINAPI set(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data,
                   DWORD size) {
    // The platform would add a terminator that is not counted.
    EXPECT_TRUE(type != REG_SZ || size == std::strlen(reinterpret_cast<const char*>(data)) + 1);
    return pass<decltype(RegSetValueExA)>("RegSetValueExA", key, name, reserved, type, data, size);
}

class Settings : public testing::TestWithParam<test::Case> {
protected:
    Settings() { begin(0); }
    ~Settings() override { EXPECT_TRUE(std::exchange(openKeys, {}).empty()) << "left open"; }

    // Stores anything in a key of the store, as another program might: "section name type bytes".
    static std::string put(std::string line) {
        const std::string section = kRoot + test::takeWord(line);
        const std::string name = test::takeWord(line);
        const DWORD type = std::stoul(test::takeWord(line));
        const auto size = static_cast<DWORD>(line.size());
        // To a text without its end the platform adds one that stands behind it.
        line += ' ';
        RegSetKeyValueA(HKEY_CURRENT_USER, section.c_str(), name.c_str(), type, line.data(), size);
        return "";
    }

    static std::string keep(const std::string& text) {
        const SettingsKey key = SettingsKey::forWriting(recorder::kKey);
        return WriteStringSetting(key, recorder::kDownloadRate, text) ? "" : "lost\n";
    }

    static std::string write(const std::string& words) {
        std::vector<ListEntry> entries;
        std::istringstream texts(words);
        for (std::string name, address, port; texts >> name >> address >> port;)
            entries.push_back({name, address, port});
        writeList(connections::kKey, connections::kFields, entries);
        return "";
    }

    static std::string list() {
        std::string words;
        for (const ListEntry& entry : readList(connections::kKey, connections::kFields))
            for (const std::string& text : entry)
                words += (words.empty() ? "" : " ") + text;
        return (words.empty() ? "nothing" : words) + "\n";
    }

    static std::string number() {
        DWORD value = 7;
        const bool isThere = SettingsKey::forReading(new_session::key("Host"))
                                 .readNumber(new_session::kOption, value);
        return (isThere ? "" : "none ") + std::to_string(value) + "\n";
    }

    static void begin(int refused) {
        calls = 0;
        refusedCall = refused;
    }

    std::string play(std::string line) const {
        const std::string word = test::takeWord(line);
        if (word == "put") return put(line);
        if (word == "keep") return keep(line);
        if (word == "write") return write(line);
        if (word == "list") return list();
        if (word == "read" && line == "number") return number();
        if (word == "read")
            return "'" + ReadStringSetting(recorder::kKey, recorder::kDownloadRate, "default") +
                   "'\n";
        if (word == "refuse") return begin(std::stoi(line)), "";
        if (word == "calls") return std::to_string(calls) + "\n";
        return test::joined(sandbox_.listing()).substr(1);
    }

    const test::RegistrySandbox sandbox_{HKEY_CURRENT_USER};
    const HMODULE program_ = GetModuleHandleW(nullptr);
    const test::ImportPatch patches_[4] = {
        {program_, "RegCreateKeyExA", reinterpret_cast<void*>(create)},
        {program_, "RegCloseKey", reinterpret_cast<void*>(close)},
        {program_, "RegQueryValueExA", reinterpret_cast<void*>(query)},
        {program_, "RegSetValueExA", reinterpret_cast<void*>(set)}};
};

TEST_P(Settings, AreReadAndWrittenAsTheTableTells) {
    test::playTable(GetParam(), [&](const std::string& line) { return play(line); });
}

INSTANTIATE_TEST_SUITE_P(Of, Settings,
                         testing::ValuesIn(test::readCases("tests/wine/settings/settings.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::settings
