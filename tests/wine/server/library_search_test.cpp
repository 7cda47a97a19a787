// Where hosts look for libraries.
#include <filesystem>

#include "hosts/shared/library_search.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/temporary_folder.h"

namespace kel::test {
namespace {

TEST(LibrarySearch, LeavesTheCurrentFolderOut) {
    namespace fs = std::filesystem;
    constexpr wchar_t kPlanted[] = L"kel_planted.dll";
    constexpr wchar_t kHelper[] = L"kel_helper.dll";
    const TemporaryFolder here, onPath;
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
