#include "script/interviewer.h"

#include <windows.h>

#include <stdexcept>

#include "script/question_dialog.h"

namespace kel::script {
namespace {

constexpr std::string_view kMessageBoxAnswer = "msgbox";
constexpr std::string_view kMissingAnswer = "No answer was set for";

}  // namespace

Answers Interviewer::ask(const Question& question) {
    return isUnattended_ ? askUnattended(question) : askUser(question);
}

void Interviewer::cancelQuestion() {
    if (open_) open_->cancel();
    box_.cancel();
}

Answers Interviewer::askUser(const Question& question) {
    struct Open {
        ~Open() { place = nullptr; }
        QuestionDialog*& place;
    };
    QuestionDialog dialog(question);
    const Open open{open_ = &dialog};
    // The engine has no other word for a window that cannot be made than for one that was
    // cancelled.
    try {
        return dialog.ask(ui::livingWindow(parentWindow_));
    } catch (const com::Error&) {
        return std::nullopt;
    } catch (const std::length_error&) {
        return std::nullopt;
    }
}

Answers Interviewer::askUnattended(const Question& question) const {
    std::string missing;
    Answers answers = answers_.answer(question, missing);
    if (!answers) report_(kMissingAnswer, {missing});
    return answers;
}

Confirmation Interviewer::confirm(const com::Bstr& text) {
    if (isUnattended_) return confirmUnattended();
    const HWND owner = ui::livingWindow(parentWindow_);
    return box_.ask(owner, text) == IDOK ? Confirmation::Ok : Confirmation::Cancelled;
}

Confirmation Interviewer::confirmUnattended() const {
    const std::string* answer = answers_.find(kMessageBoxAnswer);
    if (answer && equalsWord(*answer, "OK")) return Confirmation::Ok;
    if (answer && equalsWord(*answer, "CANCEL")) return Confirmation::Cancelled;
    report_(kMissingAnswer, {kMessageBoxAnswer});
    return Confirmation::NotAsked;
}

}  // namespace kel::script
