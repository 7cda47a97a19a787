#include <gtest/gtest.h>

#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/library.h"
#include "ui/atl.h"
#include "ui/dialog_template.h"

namespace kel::ui {
namespace {

INT_PTR CALLBACK ignore(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

std::vector<std::string> faultsOf(HWND dialog) {
    if (!dialog) return {"cannot be made"};
    std::vector<std::string> faults = test::faultsOf(dialog);
    DestroyWindow(dialog);
    return faults;
}

BOOL CALLBACK collect(HMODULE, LPCWSTR, LPWSTR name, LONG_PTR list) {
    reinterpret_cast<std::vector<LPWSTR>*>(list)->push_back(name);
    return TRUE;
}

TEST(TemplatesTest, NothingIsWrongWithAnyDialog) {
    AtlAxWinInit();
    const HMODULE library = test::kelUtils().module();
    std::vector<LPWSTR> names;
    EnumResourceNamesW(library, reinterpret_cast<LPWSTR>(RT_DIALOG), collect,
                       reinterpret_cast<LONG_PTR>(&names));
    // Those that are parts of other windows need one.
    const HWND parent =
        CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    for (const LPWSTR name : names) {
        const HWND dialog =
            AtlAxCreateDialogA(library, reinterpret_cast<LPCSTR>(name), parent, ignore, 0);
        for (const std::string& fault : faultsOf(dialog))
            ADD_FAILURE() << "dialog " << reinterpret_cast<ULONG_PTR>(name) << ": " << fault;
    }
    DestroyWindow(parent);
}

TEST(TemplatesTest, EveryFaultIsFound) {
    constexpr DWORD kShown = WS_CHILD | WS_VISIBLE;
    constexpr DWORD kStop = kShown | WS_TABSTOP;
    DialogTemplate description(L"", 200, 100);
    description.add({L"STATIC", L"&Name of the instrument", kShown, 0, {4, 4, 40, 8}, 1});
    description.add({L"EDIT", L"", kStop, 0, {40, 4, 60, 12}, 2});
    description.add({L"EDIT", L"", kStop, 0, {4, 40, 60, 12}, 3});
    description.add({L"BUTTON", L"&No && yes", kStop, 0, {4, 20, 50, 14}, 4});
    description.add({L"BUTTON", L"Near", kStop, 0, {180, 60, 40, 14}, 5});
    const HWND dialog = CreateDialogIndirectParamW(nullptr, description.get(), nullptr, ignore, 0);
    EXPECT_EQ(faultsOf(dialog),
              (std::vector<std::string>{
                  "Static 1 '&Name of the instrument' is clipped",
                  "Static 1 '&Name of the instrument' overlaps Edit 2 ''",
                  "Edit 3 '' has no label",
                  "Button 4 '&No && yes' has the mnemonic of Static 1 '&Name of the instrument'",
                  "Button 4 '&No && yes' is reached after Edit 3 ''",
                  "Button 5 'Near' sticks out",
              }));
}

}  // namespace
}  // namespace kel::ui
