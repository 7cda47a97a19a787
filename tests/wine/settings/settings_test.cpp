// The store, down to the bytes that it leaves in the registry.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "settings/settings_key.h"
#include "settings/settings_list.h"
#include "settings/vocabulary.h"
#include "tests/support/project_file.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::settings {
namespace {

using Entries = std::vector<ListEntry>;

class SettingsTest : public testing::Test {
protected:
    // Stores anything in a key of the store, as another program might.
    void put(const std::string& section, const char* name, DWORD type, std::string_view bytes) {
        const com::RegistryKeyHandle key = [&] {
            HKEY opened = nullptr;
            EXPECT_EQ(RegCreateKeyA(sandbox_.key(), (kRoot + section).c_str(), &opened), 0);
            return com::RegistryKeyHandle(opened);
        }();
        EXPECT_EQ(
            RegSetValueExA(key.get(), name, 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                           static_cast<DWORD>(bytes.size())),
            0);
    }

    static std::string fileText(const std::filesystem::path& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static Entries connections() { return readList(connections::kKey, connections::kFields); }

    test::RegistrySandbox sandbox_{HKEY_CURRENT_USER};
};

TEST_F(SettingsTest, EverythingIsKeptAsTheTableSays) {
    const SettingsKey serial = SettingsKey::forWriting(serial::key("Host"));
    WriteStringSetting(serial, serial::kPort, "Com3:");
    WriteStringSetting(serial, serial::kBaud, "19200");
    writeList(connections::kKey, connections::kFields,
              Entries{{"Pier", "10.0.0.7", "4444"}, {"", "buoy", "23"}});
    for (const char* application : {"Host", ""}) {
        const SettingsKey session = SettingsKey::forWriting(new_session::key(application));
        session.writeNumber(new_session::kOption, 2);
        session.writeNumber(new_session::kLastConnection, 0xFFFFFFFF);
    }
    SettingsKey::forWriting(open_file::key("Host")).writeNumber(open_file::kUseWorkspaces, 1);
    writeList(recent_files::key("Host"), recent_files::kFields, Entries{{"C:\\Data\\a.dat"}});
    WriteStringSetting(SettingsKey::forWriting(firmware::kKey), firmware::kLastUsedFile, "f.hex");
    const SettingsKey recorder = SettingsKey::forWriting(recorder::kKey);
    WriteStringSetting(recorder, recorder::kDownloadFolder, "");
    WriteStringSetting(recorder, recorder::kDownloadRate, "57600");
    EXPECT_EQ(test::joined(sandbox_.listing()),
              fileText(test::projectFile("tests/wine/settings/kept.txt")));
}

TEST_F(SettingsTest, OnlyWholeTextsOfTheRightKindAreRead) {
    using namespace std::string_view_literals;
    const std::string longest = std::string(498, 'x');
    const std::string tooLong = longest + "x";
    const std::string farTooLong = std::string(5000, 'x');
    const auto whole = [](const std::string& text) {
        return std::string_view(text.c_str(), text.size() + 1);
    };
    const struct {
        DWORD type;
        std::string_view bytes;
        std::string_view read;
    } cases[] = {
        {REG_SZ, "57600\0"sv, "57600"},
        {REG_SZ, "\0"sv, ""},
        {REG_SZ, "a\0b\0"sv, "a"},
        {REG_SZ, whole(longest), longest},
        {REG_SZ, whole(tooLong), "default"},
        {REG_SZ, whole(farTooLong), "default"},
        // The platform adds a terminator that stands behind the bytes; a blank stands there.
        {REG_SZ, "57600 "sv.substr(0, 5), "default"},
        {REG_SZ, " "sv.substr(0, 0), "default"},
        {REG_DWORD, "abc\0"sv, "default"},
        {REG_BINARY, "57600\0"sv, "default"},
        {REG_EXPAND_SZ, "57600\0"sv, "default"},
    };
    for (const auto& row : cases) {
        put(recorder::kKey, recorder::kDownloadRate, row.type, row.bytes);
        EXPECT_EQ(ReadStringSetting(recorder::kKey, recorder::kDownloadRate, "default"), row.read)
            << row.type << " " << row.bytes;
    }
}

TEST_F(SettingsTest, OnlyNumbersAreReadAsNumbers) {
    const std::string section = new_session::key("Host");
    const SettingsKey key = SettingsKey::forReading(section);
    DWORD value = 7;
    EXPECT_FALSE(key.readNumber(new_session::kOption, value));
    put(section, new_session::kOption, REG_SZ, std::string_view("12\0", 4));
    EXPECT_FALSE(key.readNumber(new_session::kOption, value));
    put(section, new_session::kOption, REG_DWORD, "12");
    EXPECT_FALSE(key.readNumber(new_session::kOption, value));
    EXPECT_EQ(value, 7u);
    put(section, new_session::kOption, REG_DWORD, std::string_view("\2\0\0\0", 4));
    EXPECT_TRUE(key.readNumber(new_session::kOption, value));
    EXPECT_EQ(value, 2u);
}

TEST_F(SettingsTest, ReadingMakesTheKeyAndNoValue) {
    EXPECT_EQ(ReadStringSetting(recorder::kKey, recorder::kDownloadFolder, "C:\\KelData"),
              "C:\\KelData");
    EXPECT_EQ(connections(), Entries());
    EXPECT_EQ(test::joined(sandbox_.listing()),
              "\nSoftware\nSoftware\\Kelvra\nSoftware\\Kelvra\\Components\n"
              "Software\\Kelvra\\Components\\KelGateConnect\n"
              "Software\\Kelvra\\Components\\KelGateConnect\\Connections\n"
              "Software\\Kelvra\\Components\\Recorder\n");
}

TEST_F(SettingsTest, AListEndsBeforeItsFirstIncompleteEntry) {
    const Entries three = {{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}};
    writeList(connections::kKey, connections::kFields, three);
    EXPECT_EQ(connections(), three);

    writeList(connections::kKey, connections::kFields, Entries{three[2]});
    EXPECT_EQ(connections(), Entries{three[2]});
    EXPECT_EQ(sandbox_.listing().count(
                  "Software\\Kelvra\\Components\\KelGateConnect\\Connections\\2 : Port = \"i\""),
              1u);

    // Four thousand million, most of which there are not.
    put(connections::kKey, "Count", REG_DWORD, std::string_view("\x00\x28\x6b\xee", 4));
    const std::string before = test::joined(sandbox_.listing());
    EXPECT_EQ(connections(), (Entries{three[2], three[1], three[2]}));
    EXPECT_EQ(test::joined(sandbox_.listing()),
              before + "Software\\Kelvra\\Components\\KelGateConnect\\Connections\\3\n")
        << "the look for the fourth makes its key and no more";
    put(std::string(connections::kKey) + "\\1", "Address", REG_DWORD, "abcd");
    EXPECT_EQ(connections(), Entries{three[2]});
    put(connections::kKey, "Count", REG_SZ, std::string_view("1\0", 2));
    EXPECT_EQ(connections(), Entries());
}

// Counts the calls on the registry and refuses one of them. What is patched is this program, whose
// own calls would come here too.
const HMODULE platform = GetModuleHandleW(L"advapi32.dll");
int calls;
int refusedCall;
int openKeys;

bool isRefused() {
    return ++calls == refusedCall;
}

LSTATUS WINAPI create(HKEY key, const char* name, DWORD reserved, char* className, DWORD options,
                      REGSAM access, SECURITY_ATTRIBUTES* security, HKEY* result,
                      DWORD* disposition) {
    EXPECT_EQ(options, 0u);
    EXPECT_TRUE(access == 0x20019 || access == 0x20006) << access;
    EXPECT_TRUE(!className && !security);
    if (!isRefused()) {
        const LSTATUS status =
            test::exportOf<decltype(RegCreateKeyExA)>(platform, "RegCreateKeyExA")(
                key, name, reserved, className, options, access, security, result, disposition);
        openKeys += status == ERROR_SUCCESS;
        return status;
    }
    *result = reinterpret_cast<HKEY>(1);
    return ERROR_ACCESS_DENIED;
}

LSTATUS WINAPI close(HKEY key) {
    --openKeys;
    return test::exportOf<decltype(RegCloseKey)>(platform, "RegCloseKey")(key);
}

LSTATUS WINAPI query(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                     DWORD* size) {
    return isRefused() ? ERROR_ACCESS_DENIED
                       : test::exportOf<decltype(RegQueryValueExA)>(platform, "RegQueryValueExA")(
                             key, name, reserved, type, data, size);
}

LSTATUS WINAPI set(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data,
                   DWORD size) {
    // The platform would add a terminator that is not counted.
    if (type == REG_SZ) {
        EXPECT_EQ(size, std::strlen(reinterpret_cast<const char*>(data)) + 1);
    }
    return isRefused() ? ERROR_ACCESS_DENIED
                       : test::exportOf<decltype(RegSetValueExA)>(platform, "RegSetValueExA")(
                             key, name, reserved, type, data, size);
}

class WatchedSettingsTest : public SettingsTest {
protected:
    WatchedSettingsTest() { calls = refusedCall = openKeys = 0; }
    ~WatchedSettingsTest() override { EXPECT_EQ(openKeys, 0) << "keys are left open"; }

private:
    const HMODULE program_ = GetModuleHandleW(nullptr);
    const test::ImportPatch patches_[4] = {
        {program_, "RegCreateKeyExA", reinterpret_cast<void*>(create)},
        {program_, "RegCloseKey", reinterpret_cast<void*>(close)},
        {program_, "RegQueryValueExA", reinterpret_cast<void*>(query)},
        {program_, "RegSetValueExA", reinterpret_cast<void*>(set)}};
};

TEST_F(WatchedSettingsTest, ARefusedCallLosesWhatFollows) {
    const Entries two = {{"a", "b", "c"}, {"d", "e", "f"}};
    const auto texts = [] {
        std::string all;
        for (const ListEntry& entry : connections()) {
            for (const std::string& text : entry)
                all += text;
        }
        return all;
    };
    const Entries other = {{"A", "B", "C"}, {"D", "E", "F"}};
    // The list, its length, then for each entry its key and three texts.
    const struct {
        const char* read;
        const char* afterWriting;
    } expected[] = {{"", "abcdef"},    {"", "abcdef"},    {"", "abcdef"},      {"", "abcdef"},
                    {"", "Abcdef"},    {"", "ABcdef"},    {"abc", "ABCdef"},   {"abc", "ABCdef"},
                    {"abc", "ABCDef"}, {"abc", "ABCDEf"}, {"abcdef", "ABCDEF"}};
    for (const auto& row : expected) {
        refusedCall = 0;
        writeList(connections::kKey, connections::kFields, two);
        calls = 0;
        refusedCall = static_cast<int>(&row - expected) + 1;
        EXPECT_EQ(texts(), row.read) << refusedCall;
        const int made = std::min(refusedCall, 10);
        EXPECT_EQ(calls, made) << "nothing follows a failure";
        calls = 0;
        writeList(connections::kKey, connections::kFields, other);
        EXPECT_EQ(calls, made);
        refusedCall = 0;
        EXPECT_EQ(texts(), row.afterWriting) << made;
    }
    calls = 0;
    refusedCall = 1;
    EXPECT_EQ(ReadStringSetting(recorder::kKey, recorder::kDownloadRate, "default"), "default");
}

TEST_F(WatchedSettingsTest, ATextIsWrittenUpToItsFirstZeroAndKeysAreClosedOnce) {
    SettingsKey key = SettingsKey::forWriting(firmware::kKey);
    EXPECT_TRUE(WriteStringSetting(key, firmware::kLastUsedFile, std::string("a\0b", 3)));
    EXPECT_EQ(openKeys, 1);
    key.close();
    key.close();
    EXPECT_EQ(openKeys, 0);
    EXPECT_FALSE(WriteStringSetting(key, firmware::kLastUsedFile, "c"));
    EXPECT_FALSE(SettingsKey(key, "Below", KEY_READ));
    EXPECT_EQ(ReadStringSetting(firmware::kKey, firmware::kLastUsedFile, ""), "a");
}

}  // namespace
}  // namespace kel::settings
