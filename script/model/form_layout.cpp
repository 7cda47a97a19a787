#include "script/model/form_layout.h"

#include <algorithm>
#include <stdexcept>

namespace kel::script {
namespace {

constexpr int kMargin = 7;
constexpr int kColumnGap = 6;
constexpr int kFieldHeight = 13;
constexpr int kRowGap = 4;
constexpr int kRowHeight = kFieldHeight + kRowGap;
constexpr int kFieldFrame = 8;    // what an edit field needs beside its text
constexpr int kSelectFrame = 18;  // the same with the arrow of a drop-down list
// A check box has the mark of the focus on its left, which goes into the gap between the columns.
constexpr int kCheckWidth = 14;
constexpr int kCheckIndent = 5;
constexpr int kLeastFieldWidth = 100;
constexpr int kTitleFrame = 40;  // the icons and buttons of the title bar
constexpr int kButtonWidth = 50;
constexpr int kButtonHeight = 14;
constexpr int kButtonGap = 4;
constexpr int kLeastWidth = 2 * kMargin + 2 * kButtonWidth + kButtonGap;

// Coordinates of windows have sixteen bits.
constexpr std::size_t kMostRows = 1000;

constexpr wchar_t kEllipsis[] = L"...";

// The longest beginning of a text that fits with an ellipsis behind it.
std::wstring shortened(const std::wstring& text, int width, const TextWidth& widthOf) {
    if (widthOf(text) <= width) return text;
    std::size_t fits = 0;
    std::size_t tooLong = text.size();
    while (tooLong - fits > 1) {
        const std::size_t middle = fits + (tooLong - fits) / 2;
        (widthOf(text.substr(0, middle) + kEllipsis) <= width ? fits : tooLong) = middle;
    }
    return text.substr(0, fits) + kEllipsis;
}

int widestChoice(const FormRow& row, const TextWidth& widthOf) {
    int width = 0;
    for (const std::wstring& choice : row.choices)
        width = std::max(width, widthOf(choice));
    return width + kSelectFrame;
}

int wantedWidth(const FormRow& row, const TextWidth& widthOf) {
    switch (row.kind) {
        case ControlKind::Check:
            return kCheckWidth;
        case ControlKind::Select:
            return std::max(kLeastFieldWidth, widestChoice(row, widthOf));
        case ControlKind::Input:
            return std::max(kLeastFieldWidth, widthOf(row.initial) + kFieldFrame);
    }
    return kLeastFieldWidth;
}

}  // namespace

FormLayout layOut(const Form& form, const FormSpace& space, const TextWidth& widthOf) {
    if (form.rows.size() > kMostRows) throw std::length_error("too many controls for one dialog");
    const auto count = static_cast<int>(form.rows.size());

    // A dialog leaves something of the screen, and its captions something of the dialog.
    const int mostWidth = std::max(space.width * 3 / 4 - 2 * kMargin, kLeastWidth);
    const int mostCaption = mostWidth * 2 / 5;
    int caption = 0;
    int field = 0;
    for (const FormRow& row : form.rows) {
        caption = std::max(caption, std::min(widthOf(row.caption), mostCaption));
        field = std::max(field, wantedWidth(row, widthOf));
    }
    const int fieldLeft = kMargin + caption + (caption > 0 ? kColumnGap : 0);
    field = std::min(field, mostWidth - (fieldLeft - kMargin));

    FormLayout layout;
    layout.rowHeight = kRowHeight;
    const int title = std::min(widthOf(form.title) + kTitleFrame, mostWidth);
    layout.width = std::max({kLeastWidth, title, fieldLeft + field + kMargin});

    const int below = kMargin + kButtonHeight + kMargin;
    const int fitting = std::max((space.height - kMargin - below + kRowGap) / kRowHeight, 1);
    layout.scrolls = count > fitting;
    layout.visibleRows = std::min(count, fitting);
    const int height = layout.visibleRows * kRowHeight;
    int firstTop = kMargin;
    if (layout.scrolls) {
        // Half a gap above and below each row: the pane shows whole rows only.
        firstTop = kRowGap / 2;
        layout.width += space.scrollBar;
        layout.pane = {0, kMargin - firstTop, layout.width, height};
    }

    for (int i = 0; i < count; ++i) {
        const FormRow& row = form.rows[static_cast<std::size_t>(i)];
        const int top = firstTop + i * kRowHeight;
        const bool isCheck = row.kind == ControlKind::Check;
        PlacedRow placed;
        placed.caption = shortened(row.caption, caption, widthOf);
        placed.captionPlace = {kMargin, top, caption, kFieldHeight};
        placed.field = {fieldLeft, top, field, kFieldHeight};
        if (isCheck) placed.field = {fieldLeft - kCheckIndent, top, kCheckWidth, kFieldHeight};
        if (row.kind == ControlKind::Select)
            placed.listWidth = std::clamp(widestChoice(row, widthOf), field, mostWidth);
        layout.rows.push_back(std::move(placed));
    }

    const int buttonTop = kMargin + (count > 0 ? height - kRowGap + kMargin : 0);
    layout.height = buttonTop + kButtonHeight + kMargin;
    layout.cancel = {layout.width - kMargin - kButtonWidth, buttonTop, kButtonWidth, kButtonHeight};
    layout.ok = layout.cancel;
    layout.ok.left -= kButtonWidth + kButtonGap;
    return layout;
}

}  // namespace kel::script
