#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/server/expected.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::test {
namespace {

// Has the classes of the machine for itself.
class Registration : public testing::Test {
protected:
    Registration() {
        for (const wchar_t* name : {L"CLSID", L"Interface", L"TypeLib"}) {
            com::RegistryKeyHandle key;
            EXPECT_EQ(RegCreateKeyW(classes_.key(), name, key.put()), ERROR_SUCCESS);
        }
    }

    // The platform's own marshallers left out.
    std::string registered() {
        std::set<std::string> all = classes_.listing();
        std::erase_if(all, [](const std::string& line) {
            return line.find("\\ProxyStubClsid") != std::string::npos;
        });
        return joined(all);
    }

    // The classes of registration.txt and the interfaces of interface_table.txt, nobody else's.
    static std::string expected(const std::filesystem::path& module) {
        std::set<std::string> listing = {"", "Interface"};
        for (std::string line : resourceLines(L"registration")) {
            if (const auto at = line.find("%MODULE%"); at != std::string::npos) {
                line.replace(at, 8, module.string());
            } else if (const auto folder = line.find("%FOLDER%"); folder != std::string::npos) {
                line.replace(folder, 8, module.parent_path().string());
            }
            listing.insert(line);
        }
        for (const std::string& line : resourceLines(L"interface_table")) {
            if (line.starts_with(" ") || line.starts_with("library")) continue;
            const auto start = line.find(' ') + 1;
            const std::string key = "Interface\\" + line.substr(line.find('{'));
            const std::string library = toText(LIBID_KELUTILSLib);
            listing.insert(key + " = \"" + line.substr(start, line.find(' ', start) - start) +
                           "\"");
            listing.insert(key + "\\TypeLib = \"" + library + "\"");
            listing.insert(key + "\\TypeLib : Version = \"1.0\"");
        }
        return joined(listing);
    }

    // What unregistering leaves: the roots that are everybody's.
    const std::string nothing_ = "\nCLSID\nInterface\nTypeLib\n";

    RegistrySandbox classes_{HKEY_CLASSES_ROOT};
};

HRESULT registerServer(HMODULE library = kelUtils().module()) {
    return exportOf<HRESULT WINAPI()>(library, "DllRegisterServer")();
}

HRESULT unregisterServer(HMODULE library = kelUtils().module()) {
    return exportOf<HRESULT WINAPI()>(library, "DllUnregisterServer")();
}

// A copy of the library in a folder of its own.
class LibraryCopy {
public:
    explicit LibraryCopy(const std::wstring& folderName)
        : folder_(std::filesystem::temp_directory_path() /
                  (folderName + std::to_wstring(GetCurrentProcessId()))) {
        std::filesystem::create_directories(folder_);
        std::filesystem::copy_file(kelUtils().path(), path());
    }
    ~LibraryCopy() {
        if (library_) FreeLibrary(library_);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    std::wstring path() const { return (folder_ / L"KelUtils.dll").wstring(); }
    HMODULE load() {
        if (!library_) library_ = LoadLibraryW(path().c_str());
        return library_;
    }

private:
    std::filesystem::path folder_;
    HMODULE library_ = nullptr;
};

TEST_F(Registration, WritesEveryKeyAndTakesItBack) {
    com::RegistryKeyHandle stale;
    const std::string leftOver = "CLSID\\" + toText(CLSID_Preprocessor) + "\\OlderVersion";
    ASSERT_EQ(RegCreateKeyA(classes_.key(), leftOver.c_str(), stale.put()), ERROR_SUCCESS);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(registerServer(), S_OK);
        EXPECT_EQ(registered(), expected(kelUtils().path()));
    }
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(unregisterServer(), S_OK);
        EXPECT_EQ(registered(), nothing_);
    }
}

TEST_F(Registration, FoldersMayHaveBlanksAndApostrophes) {
    LibraryCopy copy(L"it's a folder ");
    ASSERT_NE(copy.load(), nullptr);
    ASSERT_EQ(registerServer(copy.load()), S_OK);
    EXPECT_EQ(registered(), expected(copy.path()));
    EXPECT_EQ(unregisterServer(copy.load()), S_OK);
    EXPECT_EQ(registered(), nothing_);
}

TEST_F(Registration, WithoutTypeLibraryFailsAndCanStillBeTakenBack) {
    LibraryCopy copy(L"no type library ");
    {
        std::fstream file(std::filesystem::path(copy.path()),
                          std::ios::in | std::ios::out | std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        file.seekp(static_cast<std::streamoff>(bytes.find("MSFT\x02")));
        file << "gone";
    }
    com::ComPtr<ITypeLib> library;
    const HRESULT missing = LoadTypeLibEx(copy.path().c_str(), REGKIND_NONE, &library);
    ASSERT_TRUE(FAILED(missing));

    ASSERT_NE(copy.load(), nullptr);
    EXPECT_EQ(registerServer(copy.load()), missing);
    EXPECT_EQ(unregisterServer(copy.load()), S_OK);
    EXPECT_EQ(registered(), nothing_);
}

LSTATUS WINAPI refuseRecorder(HKEY key, const wchar_t* name, HKEY* result) {
    if (std::wstring_view(name) == L"KelUtils.RecorderDialog.1") return ERROR_ACCESS_DENIED;
    return RegCreateKeyW(key, name, result);
}

TEST_F(Registration, StopsAtTheFirstRefusedKey) {
    {
        const ImportPatch patch(GetModuleHandleW(L"atl.dll"), "RegCreateKeyW",
                                reinterpret_cast<void*>(refuseRecorder));
        EXPECT_EQ(registerServer(), E_ACCESSDENIED);
    }
    const std::string listing = registered();
    EXPECT_NE(listing.find("KelUtils.Preprocessor.1"), std::string::npos);
    EXPECT_EQ(listing.find("KelUtils.CompassCalibDialog.1"), std::string::npos);
    EXPECT_EQ(unregisterServer(), S_OK);
    EXPECT_EQ(registered(), nothing_);
}

}  // namespace
}  // namespace kel::test
