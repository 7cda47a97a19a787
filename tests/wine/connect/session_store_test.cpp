#include "dialogs/connect/session_store.h"

#include <gtest/gtest.h>

#include "com/text.h"
#include "tests/wine/support/registry_sandbox.h"

namespace kel::connect {
namespace {

using Paths = std::vector<std::wstring>;

// Two bytes a character make long texts of paths that the system takes.
TEST(SessionStoreTest, AFileTooLongToBeRememberedHidesNoOther) {
    const test::RegistrySandbox store(HKEY_CURRENT_USER);
    const std::wstring longest(498, L'x');
    saveFiles(L"Any", {.recent = ui::RecentPaths(com::sameName,
                                                 {longest + L"x", L"first", longest, L"last"})});
    EXPECT_EQ(loadFiles(L"Any", false).recent.paths(), (Paths{L"first", longest, L"last"}));
}

}  // namespace
}  // namespace kel::connect
