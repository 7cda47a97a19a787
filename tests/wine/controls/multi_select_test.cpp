// The list of the multi-select dialog: how it is made.
#include <commctrl.h>

#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

TEST(MultiSelectTest, ItsListHasBoxesAndShowsWholeRows) {
    const auto dialog = kelUtils().create<IMultiSelectDialog>(CLSID_MultiSelectDialog);
    com::check(dialog->Add(com::Bstr(L"Mean of the last hour").get(), VARIANT_TRUE));
    const DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(L"Select options");
        const HWND list = driver.control(IDC_SELECTOR_LIST);
        EXPECT_EQ(GetWindowLongW(list, GWL_EXSTYLE) & WS_EX_NOPARENTNOTIFY, WS_EX_NOPARENTNOTIFY);
        EXPECT_EQ(driver.send(list, LVM_GETEXTENDEDLISTVIEWSTYLE),
                  LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
        const LRESULT width = driver.send(list, LVM_GETCOLUMNWIDTH);
        driver.send(list, LVM_SETCOLUMNWIDTH, 0, LVSCW_AUTOSIZE);
        EXPECT_GE(width, driver.send(list, LVM_GETCOLUMNWIDTH));
        driver.press(IDOK);
    });
    VARIANT_BOOL result = VARIANT_FALSE;
    EXPECT_EQ(dialog->ShowModal(0, &result), S_OK);
}

}  // namespace
}  // namespace kel::test
