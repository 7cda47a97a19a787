#include "dialogs/service/recorder_rows.h"

#include <commctrl.h>
#include <oleauto.h>

#include "com/text.h"
#include "dialogs/service/model/recorder_texts.h"
#include "ui/model/formats.h"

namespace kel::service {
namespace {

struct Column {
    const wchar_t* text;
    int format;
    int width;  // at 96 dots per inch
};

constexpr Column kColumns[] = {{L"Name", LVCFMT_LEFT, 78},
                               {L"Size", LVCFMT_RIGHT, 80},
                               {L"Date", LVCFMT_CENTER, 85},
                               {L"Time", LVCFMT_CENTER, 68}};

int dotsPerInch(HWND window) {
    const HDC device = GetDC(window);
    const int dots = GetDeviceCaps(device, LOGPIXELSX);
    ReleaseDC(window, device);
    return dots;
}

}  // namespace

void RecorderRows::addColumns() {
    const int dots = dotsPerInch(list_);
    int index = 0;
    for (const Column& each : kColumns) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_FMT | LVCF_WIDTH | LVCF_SUBITEM;
        column.pszText = const_cast<wchar_t*>(each.text);
        column.fmt = each.format;
        column.cx = MulDiv(each.width, dots, 96);
        column.iSubItem = index;
        SendMessageW(list_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(index++),
                     reinterpret_cast<LPARAM>(&column));
    }
    SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

void RecorderRows::reserve(long count) {
    SendMessageW(list_, LVM_SETITEMCOUNT, static_cast<WPARAM>(count), 0);
}

void RecorderRows::add(const std::wstring& name, const com::ComPtr<IRecorderFile>& file) {
    LONGLONG size = 0;
    DATE written = 0;
    com::check(file->get_Size(&size), file);
    com::check(file->get_Time(&written), file);
    std::wstring texts[] = {name, com::widen(ui::sizeText(size)), {}, {}};
    // A clock that was never set may tell no date at all.
    SYSTEMTIME time{};
    if (VariantTimeToSystemTime(written, &time)) {
        texts[2] = fileDateText(time.wYear, time.wMonth, time.wDay);
        texts[3] = fileTimeText(time.wHour, time.wMinute);
    }
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(SendMessageW(list_, LVM_GETITEMCOUNT, 0, 0));
    item.pszText = texts[0].data();
    if (SendMessageW(list_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)) < 0)
        throw com::Error(E_OUTOFMEMORY);
    for (item.iSubItem = 1; item.iSubItem < static_cast<int>(std::size(texts)); ++item.iSubItem) {
        item.pszText = texts[item.iSubItem].data();
        SendMessageW(list_, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
}

void RecorderRows::clear() {
    SendMessageW(list_, LVM_DELETEALLITEMS, 0, 0);
}

void RecorderRows::selectAll() {
    LVITEMW item{};
    item.state = LVIS_SELECTED;
    item.stateMask = LVIS_SELECTED;
    SendMessageW(list_, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&item));
}

std::vector<long> RecorderRows::selected() const {
    std::vector<long> rows;
    const auto next = [this](long row) {
        return static_cast<long>(
            SendMessageW(list_, LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
    };
    for (long row = next(-1); row >= 0; row = next(row))
        rows.push_back(row);
    return rows;
}

}  // namespace kel::service
