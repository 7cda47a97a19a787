#include "script/interviewer.h"

#include <windows.h>

namespace kel::script {
namespace {

constexpr std::string_view kMessageBoxAnswer = "msgbox";
constexpr std::string_view kMissingAnswer = "No answer was set for";

}  // namespace

Answers Interviewer::ask(const Question& question) const {
    if (!isUnattended_) {
        report_("Dialogs are not implemented in this version", {});
        return std::nullopt;
    }
    std::string missing;
    Answers answers = answers_.answer(question, missing);
    if (!answers) report_(kMissingAnswer, {missing});
    return answers;
}

Confirmation Interviewer::confirm(const com::Bstr& text) const {
    if (isUnattended_) return confirmUnattended();
    const HWND window = reinterpret_cast<HWND>(parentWindow_);
    const HWND owner = IsWindow(window) ? window : nullptr;
    const int button = MessageBoxW(owner, text.get(), L"Message", MB_OKCANCEL | MB_ICONEXCLAMATION);
    return button == IDOK ? Confirmation::Ok : Confirmation::Cancelled;
}

Confirmation Interviewer::confirmUnattended() const {
    const std::string* answer = answers_.find(kMessageBoxAnswer);
    if (answer && equalsWord(*answer, "OK")) return Confirmation::Ok;
    if (answer && equalsWord(*answer, "CANCEL")) return Confirmation::Cancelled;
    report_(kMissingAnswer, {kMessageBoxAnswer});
    return Confirmation::NotAsked;
}

}  // namespace kel::script
