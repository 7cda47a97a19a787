// The multi-select dialog, used as by any user.
#include <commctrl.h>

#include <map>
#include <sstream>

#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/support/cases.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/dialog_faults.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/test_window.h"

namespace kel::test {
namespace {

HWND listOf(DialogDriver& user) {
    return user.control(IDC_SELECTOR_LIST);
}

// Each row: checked or not, a star where it is selected.
std::string rowsOf(DialogDriver& user) {
    std::string rows;
    const LRESULT count = user.send(listOf(user), LVM_GETITEMCOUNT);
    for (LRESULT row = 0; row < count; ++row) {
        const auto state =
            static_cast<UINT>(user.send(listOf(user), LVM_GETITEMSTATE, static_cast<WPARAM>(row),
                                        LVIS_STATEIMAGEMASK | LVIS_SELECTED));
        rows += row > 0 ? " " : "";
        rows += (state & LVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2) ? "+" : "-";
        rows += state & LVIS_SELECTED ? "*" : "";
    }
    return rows;
}

// Where the label of a row begins; its check box stands before it.
POINT labelOf(DialogDriver& user, int row) {
    RECT label{};
    label.left = LVIR_LABEL;
    user.send(listOf(user), LVM_GETITEMRECT, static_cast<WPARAM>(row),
              reinterpret_cast<LPARAM>(&label));
    return {label.left, (label.top + label.bottom) / 2};
}

// What a user does: a word and its arguments.
void act(DialogDriver& user, const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    const auto row = [&] {
        int number = 0;
        words >> number;
        return number;
    };
    const auto button = [&] {
        std::string name;
        words >> name;
        return name == "ok" ? IDOK : IDCANCEL;
    };
    const auto clickBox = [&](const std::vector<UINT>& messages, WPARAM keys = 0) {
        POINT at = labelOf(user, row());
        at.x -= 8;
        for (const UINT message : messages)
            PostMessageW(listOf(user), message, keys, MAKELPARAM(at.x, at.y));
        user.send(listOf(user), WM_NULL);
    };
    if (word == "sees") {
        std::string rows;
        std::getline(words >> std::ws, rows);
        user.waitUntil(line.c_str(), [&] { return rowsOf(user) == rows; });
    } else if (word == "select") {
        LVITEMW item{};
        item.stateMask = LVIS_SELECTED;
        const auto set = [&](int which) {
            user.send(listOf(user), LVM_SETITEMSTATE, static_cast<WPARAM>(which),
                      reinterpret_cast<LPARAM>(&item));
        };
        set(-1);
        item.state = LVIS_SELECTED;
        for (int which; words >> which;)
            set(which);
    } else if (word == "click") {
        clickBox({WM_LBUTTONDOWN, WM_LBUTTONUP});
    } else if (word == "doubleclick") {
        clickBox({WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP});
    } else if (word == "controlclick") {
        clickBox({WM_LBUTTONDOWN, WM_LBUTTONUP}, MK_CONTROL);
    } else if (word == "labelclick") {
        const POINT at = labelOf(user, row());
        for (const UINT message : {WM_LBUTTONDOWN, WM_LBUTTONUP})
            PostMessageW(listOf(user), message, 0, MAKELPARAM(at.x + 4, at.y));
    } else if (word == "hidden") {
        EXPECT_FALSE(IsWindowVisible(user.control(button()))) << line;
    } else if (word == "press") {
        user.press(button());
    } else if (word == "close") {
        PostMessageW(user.window(), WM_CLOSE, 0, 0);
    } else if (word == "controlspace") {
        user.key(VK_SPACE, VK_CONTROL);
    } else {
        const std::map<std::string_view, WORD> keys = {
            {"space", VK_SPACE}, {"down", VK_DOWN}, {"enter", VK_RETURN}, {"escape", VK_ESCAPE}};
        user.key(keys.at(word));
    }
}

class MultiSelectTest : public testing::Test {
protected:
    bool isChecked(long index) const {
        VARIANT_BOOL checked = VARIANT_FALSE;
        com::check(dialog_->get_Value(com::Variant(index).get(), &checked));
        EXPECT_TRUE(checked == VARIANT_TRUE || checked == VARIANT_FALSE);
        return checked == VARIANT_TRUE;
    }

    com::ComPtr<IMultiSelectDialog> dialog_ =
        kelUtils().create<IMultiSelectDialog>(CLSID_MultiSelectDialog);
};

TEST_F(MultiSelectTest, Cases) {
    for (const Case& row : readCases("tests/wine/controls/selections.txt")) {
        SCOPED_TRACE(testing::PrintToString(row));
        const Step& step = row.steps.front();
        dialog_ = kelUtils().create<IMultiSelectDialog>(CLSID_MultiSelectDialog);
        std::vector<std::string> names;
        for (const std::string& line : step.lines) {
            const bool hides = line.starts_with("hide ");
            if (line == "hide ok") com::check(dialog_->put_OKText(nullptr));
            if (line == "hide cancel") com::check(dialog_->put_CancelText(nullptr));
            std::istringstream words(hides ? "" : line);
            for (std::string word; words >> word;) {
                const bool isChecked = word.front() == '+';
                names.push_back(word.substr(isChecked ? 1 : 0));
                com::check(dialog_->Add(com::Bstr(names.back()).get(), isChecked ? 1 : 0));
            }
        }
        const DialogDriver user([&](DialogDriver& driver) {
            driver.waitFor(L"Select options");
            for (const std::string& line : step.settings)
                act(driver, line);
        });
        VARIANT_BOOL result = VARIANT_FALSE;
        EXPECT_EQ(dialog_->ShowModal(0, &result), S_OK);
        std::string shown = result == VARIANT_TRUE ? "true" : "false";
        for (std::size_t i = 0; i < names.size(); ++i)
            shown += (isChecked(static_cast<long>(i)) ? " +" : " ") + names[i];
        EXPECT_EQ(shown + "\n", step.expected);
    }
}

TEST_F(MultiSelectTest, TheHostMayCallAnythingWhileItIsOpen) {
    com::check(dialog_->Add(com::Bstr(L"Mean of the last hour").get(), VARIANT_TRUE));
    com::check(dialog_->put_Title(com::Bstr(L"Parts & more").get()));
    com::check(dialog_->put_Prompt(com::Bstr(L"Which\nof these").get()));
    com::check(dialog_->put_OKText(com::Bstr(L"Take all that are checked").get()));
    IMultiSelectDialog* dialog = dialog_.Get();
    VARIANT_BOOL second = VARIANT_TRUE;
    bench::test::TestWindow host;
    host.post([&] {
        EXPECT_EQ(dialog->ShowModal(0, &second), S_OK);
        EXPECT_EQ(dialog->Add(com::Bstr(L"late").get(), VARIANT_TRUE), S_OK);
        dialog_.Reset();
    });
    const DialogDriver user([&](DialogDriver& driver) {
        driver.waitFor(L"Parts & more");
        driver.waitUntil("the host", [&] { return !dialog_; });
        EXPECT_EQ(faultsOf(driver.window()), std::vector<std::string>());
        EXPECT_EQ(driver.text(IDC_SELECTOR_PROMPT), L"Which\nof these");
        EXPECT_EQ(rowsOf(driver), "+");
        EXPECT_EQ(GetWindowLongW(listOf(driver), GWL_EXSTYLE) & WS_EX_NOPARENTNOTIFY,
                  WS_EX_NOPARENTNOTIFY);
        EXPECT_EQ(driver.send(listOf(driver), LVM_GETEXTENDEDLISTVIEWSTYLE),
                  LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
        const LRESULT width = driver.send(listOf(driver), LVM_GETCOLUMNWIDTH);
        driver.send(listOf(driver), LVM_SETCOLUMNWIDTH, 0, LVSCW_AUTOSIZE);
        EXPECT_GE(width, driver.send(listOf(driver), LVM_GETCOLUMNWIDTH));
        driver.press(IDOK);
    });
    VARIANT_BOOL first = VARIANT_FALSE;
    EXPECT_EQ(dialog->ShowModal(0, &first), S_OK);
    EXPECT_EQ(first, VARIANT_TRUE);
    EXPECT_EQ(second, VARIANT_FALSE);
}

}  // namespace
}  // namespace kel::test
