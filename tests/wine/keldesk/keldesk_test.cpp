// The resources of keldesk; what its user does with it stands in a scene.
#include <gtest/gtest.h>
#include <windows.h>

#include <set>

#include "hosts/keldesk/resource_ids.h"
#include "tests/support/project_file.h"

namespace kel::test {
namespace {

// Adds what is wrong with the mnemonics of a menu, those below it included.
void lookOver(HMENU menu, std::set<std::wstring>& faults) {
    std::set<wchar_t> mnemonics;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        wchar_t text[100] = L"";
        GetMenuStringW(menu, static_cast<UINT>(i), text, static_cast<int>(std::size(text)),
                       MF_BYPOSITION);
        const std::wstring_view item = text;
        const auto mark = item.find(L'&');
        const bool isEntry = !item.empty() && item != L"(none)";
        if (isEntry && (mark == std::wstring_view::npos ||
                        !mnemonics.insert(static_cast<wchar_t>(towlower(item[mark + 1]))).second))
            faults.emplace(item);
        if (const HMENU below = GetSubMenu(menu, i)) lookOver(below, faults);
    }
}

TEST(KeldeskMenuTest, EveryEntryHasAKeyOfItsOwn) {
    const HMODULE program = LoadLibraryExW(projectFile("hosts/keldesk/keldesk.exe").c_str(),
                                           nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const HMENU menu = LoadMenuW(program, MAKEINTRESOURCEW(IDR_DESK));
    ASSERT_GT(GetMenuItemCount(menu), 0);
    std::set<std::wstring> faults;
    lookOver(menu, faults);
    EXPECT_EQ(faults, std::set<std::wstring>());
    DestroyMenu(menu);
    FreeLibrary(program);
}

}  // namespace
}  // namespace kel::test
