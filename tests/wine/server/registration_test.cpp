#include <filesystem>

#include "interfaces/KelUtils.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/server/library_classes.h"
#include "tests/wine/server/machine_classes.h"
#include "tests/wine/support/import_patch.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

namespace fs = std::filesystem;

void replace(std::string& line, const std::string& text, const char* sign) {
    if (const auto at = line.find(text); at != line.npos) line.replace(at, text.size(), sign);
}

class Registration : public MachineClasses {
protected:
    // As registration.txt tells it of a library, the platform's own marshallers left out.
    std::string registered(const fs::path& library = kelUtils().path()) {
        std::set<std::string> lines;
        for (std::string line : classes_.listing()) {
            if (line.find("\\ProxyStubClsid") != line.npos) continue;
            replace(line, library.string(), "%MODULE%");
            replace(line, library.parent_path().string(), "%FOLDER%");
            lines.insert(line);
        }
        return joined(lines);
    }

    const std::string everything_ =
        TemporaryFile::bytesOf(projectFile("tests/wine/server/registration.txt"));
    // What unregistering leaves.
    const std::string nothing_ = "\nCLSID\nInterface\nTypeLib\n";
};

// A library in a folder of its own.
struct LibraryCopy {
    explicit LibraryCopy(const std::string& bytes) {
        fs::create_directory(fs::path(folder.path()) / L"it's a folder");
        path = folder.file(L"it's a folder\\KelUtils.dll", bytes);
        module = LoadLibraryW(path.c_str());
        EXPECT_NE(module, nullptr);
    }
    ~LibraryCopy() { FreeLibrary(module); }

    const TemporaryFolder folder;
    std::wstring path;
    HMODULE module;
};

TEST_F(Registration, WritesEveryKeyAndTakesItBack) {
    com::RegistryKeyHandle stale;
    const std::string leftOver = "CLSID\\" + toText(CLSID_Preprocessor) + "\\OlderVersion";
    ASSERT_EQ(RegCreateKeyA(classes_.key(), leftOver.c_str(), stale.put()), ERROR_SUCCESS);
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(registerServer(), S_OK);
        EXPECT_EQ(registered(), everything_);
    }
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(unregisterServer(), S_OK);
        EXPECT_EQ(registered(), nothing_);
    }
}

TEST_F(Registration, FoldersMayHaveBlanksAndApostrophes) {
    const LibraryCopy copy(TemporaryFile::bytesOf(kelUtils().path()));
    ASSERT_EQ(registerServer(copy.module), S_OK);
    EXPECT_EQ(registered(copy.path), everything_);
    EXPECT_EQ(unregisterServer(copy.module), S_OK);
    EXPECT_EQ(registered(), nothing_);
}

TEST_F(Registration, WithoutTypeLibraryFailsAndCanStillBeTakenBack) {
    std::string bytes = TemporaryFile::bytesOf(kelUtils().path());
    bytes.replace(bytes.find("MSFT\x02"), 4, "gone");
    const LibraryCopy copy(bytes);
    com::ComPtr<ITypeLib> library;
    const HRESULT missing = LoadTypeLibEx(copy.path.c_str(), REGKIND_NONE, &library);
    ASSERT_TRUE(FAILED(missing));
    EXPECT_EQ(registerServer(copy.module), missing);
    EXPECT_EQ(unregisterServer(copy.module), S_OK);
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
