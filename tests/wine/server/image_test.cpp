// The libraries as files: what protects the process that loads them.
#include <gtest/gtest.h>

#include <filesystem>

#include "hosts/shared/library_search.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

template <class Value>
const Value* inside(HMODULE module, DWORD address) {
    return reinterpret_cast<const Value*>(reinterpret_cast<const char*>(module) + address);
}

TEST(Image, IsMovedInMemoryAndRunsNoData) {
    for (const Library* library : {&kelUtils(), &benchLink(), &kelTrace()}) {
        const HMODULE module = library->module();
        const auto* headers =
            inside<IMAGE_NT_HEADERS>(module, inside<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
        const IMAGE_OPTIONAL_HEADER& options = headers->OptionalHeader;
        EXPECT_TRUE(options.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
        EXPECT_TRUE(options.DllCharacteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
        EXPECT_GT(options.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 0u);
        const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
        for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
            constexpr DWORD kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
            EXPECT_NE(section->Characteristics & kBoth, kBoth) << i;
        }
    }
}

TEST(Image, NeedsLibrariesOfTheSystemAlone) {
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    const HMODULE module = kelUtils().module();
    const auto* headers =
        inside<IMAGE_NT_HEADERS>(module, inside<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const auto* imported = inside<IMAGE_IMPORT_DESCRIPTOR>(
        module, headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    ASSERT_NE(imported->Name, 0u);
    for (; imported->Name != 0; ++imported) {
        const auto* name = inside<char>(module, imported->Name);
        EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(system) / name)) << name;
    }
}

TEST(LibrarySearch, LeavesTheCurrentFolderOut) {
    namespace fs = std::filesystem;
    constexpr wchar_t kPlanted[] = L"kel_planted.dll";
    constexpr wchar_t kHelper[] = L"kel_helper.dll";
    const TemporaryFolder here;
    const TemporaryFolder onPath;
    const fs::path before = fs::current_path();
    fs::copy_file(benchLink().path(), fs::path(here.path()) / kPlanted);
    fs::copy_file(benchLink().path(), fs::path(onPath.path()) / kHelper);
    SetEnvironmentVariableW(L"PATH", (L".;" + onPath.path()).c_str());
    fs::current_path(here.path());

    const HMODULE planted = LoadLibraryW(kPlanted);
    EXPECT_NE(planted, nullptr) << "unless told otherwise the system takes it";
    FreeLibrary(planted);
    host::leaveOutCurrentFolder();
    EXPECT_EQ(LoadLibraryW(kPlanted), nullptr);
    EXPECT_EQ(host::loadFromProgramFolder(kPlanted), nullptr);
    const HMODULE helper = LoadLibraryW(kHelper);
    EXPECT_NE(helper, nullptr) << "instrument links may keep libraries on the path";
    FreeLibrary(helper);
    fs::current_path(before);
}

}  // namespace
}  // namespace kel::test
