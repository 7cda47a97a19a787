#include "hosts/kelrun/model/status_line.h"

#include <algorithm>

namespace kel::kelrun {
namespace {

// Signs of East Asia take two cells; counting two for others as well only cuts a little early.
std::size_t cellsOf(wchar_t character) {
    return character < 0x1100 ? 1 : 2;
}

}  // namespace

void StatusLine::show(std::wstring_view text) {
    if (text == shown_) return;
    shown_ = text;
    const std::size_t column = screen_.column();
    const std::size_t width = screen_.width();
    std::wstring row = column > 0 ? L"\n" : L"";
    std::size_t cells = 0;
    // The last cell stays free: a console may begin a new row behind it.
    for (const wchar_t character : text) {
        if (cells + cellsOf(character) >= width) break;
        cells += cellsOf(character);
        row += character;
    }
    row.append(std::max(cells, cells_) - cells, L' ');
    cells_ = cells;
    screen_.write(row);
    screen_.moveUp(column > 0 ? 1 : 0, column);
}

}  // namespace kel::kelrun
