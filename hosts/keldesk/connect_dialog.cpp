#include "hosts/keldesk/connect_dialog.h"

#include <cwchar>

#include "com/text.h"
#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/resource_ids.h"

namespace kel::keldesk {
namespace {

constexpr long kRates[] = {300, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

std::wstring textOf(HWND dialog, int control) {
    wchar_t text[256] = L"";
    GetDlgItemTextW(dialog, control, text, static_cast<int>(std::size(text)));
    return text;
}

void fill(HWND dialog, const host::Target& target) {
    const std::wstring place = com::widen(nameOf(target), CP_UTF8);
    SetDlgItemTextW(dialog, IDC_CONNECT_PLACE, place.c_str());
    for (const long rate : kRates) {
        SendDlgItemMessageW(dialog, IDC_CONNECT_RATE, CB_ADDSTRING, 0,
                            reinterpret_cast<LPARAM>(std::to_wstring(rate).c_str()));
    }
    SetDlgItemTextW(dialog, IDC_CONNECT_RATE, std::to_wstring(target.baudRate).c_str());
}

// False when the fields do not name a place.
bool read(HWND dialog, host::Target& target) {
    const long rate = std::wcstol(textOf(dialog, IDC_CONNECT_RATE).c_str(), nullptr, 10);
    const std::string place = com::narrow(textOf(dialog, IDC_CONNECT_PLACE), CP_UTF8);
    const int wrong = place.empty() ? IDC_CONNECT_PLACE : rate < 1 ? IDC_CONNECT_RATE : 0;
    if (wrong != 0) {
        SetFocus(GetDlgItem(dialog, wrong));
        MessageBeep(MB_ICONWARNING);
        return false;
    }
    target = targetOf(place, rate);
    return true;
}

INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wide, LPARAM longer) {
    switch (message) {
        case WM_INITDIALOG:
            SetWindowLongPtrW(dialog, DWLP_USER, longer);
            fill(dialog, *reinterpret_cast<host::Target*>(longer));
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wide) == IDCANCEL) EndDialog(dialog, IDCANCEL);
            if (LOWORD(wide) == IDOK && read(dialog, *reinterpret_cast<host::Target*>(
                                                         GetWindowLongPtrW(dialog, DWLP_USER)))) {
                EndDialog(dialog, IDOK);
            }
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

std::optional<host::Target> askForTarget(HWND owner, const host::Target& before) {
    host::Target target = before;
    const INT_PTR result = DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_CONNECT),
                                           owner, procedure, reinterpret_cast<LPARAM>(&target));
    if (result != IDOK) return std::nullopt;
    return target;
}

}  // namespace kel::keldesk
