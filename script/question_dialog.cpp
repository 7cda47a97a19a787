#include "script/question_dialog.h"

#include <algorithm>

#include "com/text.h"
#include "ui/dialog_metrics.h"

namespace kel::script {
namespace {

constexpr DWORD kShown = WS_CHILD | WS_VISIBLE;
constexpr DWORD kCheckStyle = kShown | WS_TABSTOP | BS_AUTOCHECKBOX | BS_LEFTTEXT;
constexpr DWORD kSelectStyle = kShown | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_HASSTRINGS;
constexpr DWORD kInputStyle = kShown | WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL | ES_NOHIDESEL;
constexpr WORD kNoIdentifier = 0xFFFF;

constexpr int kMostListRows = 10;
constexpr int kListRowHeight = 8;

Form widened(const Question& question) {
    Form form{com::widen(question.title), {}};
    for (const Control& control : question.controls) {
        FormRow row{control.kind, com::widen(control.caption), com::widen(control.initial), {}};
        for (const std::string& choice : control.choices)
            row.choices.push_back(com::widen(choice));
        form.rows.push_back(std::move(row));
    }
    return form;
}

ui::UnitRectangle units(const Place& place) {
    return {static_cast<short>(place.left), static_cast<short>(place.top),
            static_cast<short>(place.width), static_cast<short>(place.height)};
}

// As a control shows it: an ampersand would underline the next character.
std::wstring asItStands(std::wstring text) {
    for (std::size_t at = text.find(L'&'); at != text.npos; at = text.find(L'&', at + 2))
        text.insert(at, 1, L'&');
    return text;
}

}  // namespace

QuestionDialog::QuestionDialog(const Question& question)
    : question_(question), form_(widened(question)) {}

Answers QuestionDialog::ask(HWND owner) {
    const ui::DialogMetrics metrics;
    const auto [width, height] = metrics.largestClient(owner);
    layout_ = layOut(form_, {width, height, metrics.scrollBarWidth()},
                     [&](std::wstring_view text) { return metrics.textWidth(text); });
    ui::DialogTemplate description(form_.title, static_cast<short>(layout_.width),
                                   static_cast<short>(layout_.height));
    if (!layout_.scrolls) addRows(description);
    constexpr DWORD kButtonStyle = kShown | WS_TABSTOP;
    description.add(
        {L"BUTTON", L"OK", kButtonStyle | BS_DEFPUSHBUTTON, 0, units(layout_.ok), IDOK});
    description.add({L"BUTTON", L"Cancel", kButtonStyle, 0, units(layout_.cancel), IDCANCEL});
    if (runModal(description, owner) != IDOK) return std::nullopt;
    return std::move(answers_);
}

void QuestionDialog::initialise() {
    if (layout_.scrolls) {
        const ui::UnitRectangle place = units(layout_.pane);
        ui::DialogTemplate description = ui::RowPane::description(place.width, place.height);
        addRows(description);
        pane_.emplace(static_cast<int>(layout_.rows.size()), layout_.visibleRows,
                      layout_.rowHeight);
        pane_->open(description, window(), place);
    }
    for (std::size_t i = 0; i < form_.rows.size(); ++i)
        fill(field(i), i);
}

HWND QuestionDialog::initialFocus() {
    return form_.rows.empty() ? nullptr : field(0);
}

bool QuestionDialog::command(int control, int notification) {
    if (control == IDOK) {
        answers_.clear();
        for (std::size_t i = 0; i < form_.rows.size(); ++i)
            answers_.push_back(answer(i));
    }
    return Dialog::command(control, notification);
}

std::optional<LRESULT> QuestionDialog::handle(UINT message, WPARAM wide, LPARAM) {
    if (message != WM_MOUSEWHEEL || !pane_) return std::nullopt;
    pane_->turnWheel(GET_WHEEL_DELTA_WPARAM(wide));
    return 0;
}

void QuestionDialog::addRows(ui::DialogTemplate& description) const {
    for (std::size_t i = 0; i < form_.rows.size(); ++i) {
        const PlacedRow& row = layout_.rows[i];
        const auto identifier = static_cast<WORD>(kFirstField + i);
        description.add({L"STATIC", asItStands(row.caption), kShown | SS_CENTERIMAGE, 0,
                         units(row.captionPlace), kNoIdentifier});
        ui::UnitRectangle place = units(row.field);
        switch (form_.rows[i].kind) {
            case ControlKind::Check:
                // With a blank, for the mark of the focus stands around the text.
                description.add({L"BUTTON", L" ", kCheckStyle, 0, place, identifier});
                break;
            case ControlKind::Select: {
                // The height of a drop-down list is that of the open one.
                const auto count = static_cast<int>(form_.rows[i].choices.size());
                const int listRows = std::clamp(count, 1, kMostListRows) + 1;
                place.height = static_cast<short>(place.height + listRows * kListRowHeight);
                description.add({L"COMBOBOX", L"", kSelectStyle, 0, place, identifier});
                break;
            }
            case ControlKind::Input:
                description.add({L"EDIT", L"", kInputStyle, WS_EX_CLIENTEDGE, place, identifier});
                break;
        }
    }
}

void QuestionDialog::fill(HWND field, std::size_t row) {
    const Control& control = question_.controls[row];
    const FormRow& texts = form_.rows[row];
    switch (control.kind) {
        case ControlKind::Check:
            SendMessageW(field, BM_SETCHECK, control.initial == "1" ? BST_CHECKED : BST_UNCHECKED,
                         0);
            break;
        case ControlKind::Select: {
            for (const std::wstring& choice : texts.choices)
                SendMessageW(field, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(choice.c_str()));
            const auto& choices = control.choices;
            const auto initial = std::find(choices.begin(), choices.end(), control.initial);
            SendMessageW(field, CB_SETCURSEL, static_cast<WPARAM>(initial - choices.begin()), 0);
            RECT list{0, 0, layout_.rows[row].listWidth, 0};
            MapDialogRect(window(), &list);
            SendMessageW(field, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(list.right), 0);
            break;
        }
        case ControlKind::Input:
            SetWindowTextW(field, texts.initial.c_str());
            SendMessageW(field, EM_SETSEL, 0, -1);
            break;
    }
}

HWND QuestionDialog::field(std::size_t row) const {
    return GetDlgItem(pane_ ? pane_->window() : window(), static_cast<int>(kFirstField + row));
}

std::string QuestionDialog::answer(std::size_t row) const {
    const Control& control = question_.controls[row];
    const HWND window = field(row);
    switch (control.kind) {
        case ControlKind::Check:
            return SendMessageW(window, BM_GETCHECK, 0, 0) == BST_CHECKED ? "1" : "0";
        case ControlKind::Select: {
            const LRESULT chosen = SendMessageW(window, CB_GETCURSEL, 0, 0);
            if (chosen == CB_ERR) return {};
            return control.choices.at(static_cast<std::size_t>(chosen));
        }
        case ControlKind::Input:
            return com::narrow(com::windowText(window));
    }
    return {};
}

}  // namespace kel::script
