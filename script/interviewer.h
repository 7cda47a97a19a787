#pragma once
// How a script's questions are answered: by the user, or by answers that were set beforehand.

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "com/text.h"
#include "script/closable_box.h"
#include "script/engine/prepared_answers.h"
#include "script/engine/question.h"
#include "script/engine/text_rules.h"

namespace kel::script {

// Tells an error of the running script.
using ErrorReport =
    std::function<void(std::string_view message, std::initializer_list<std::string_view> parts)>;

// What came of a message box. Where none could be shown, that has been reported.
enum class Confirmation { Ok, Cancelled, NotAsked };

class QuestionDialog;

class Interviewer {
public:
    // `rules` and `parentWindow`, the owner of every window, must outlive the interviewer.
    Interviewer(const TextRules& rules, const long& parentWindow, ErrorReport report)
        : answers_(rules), parentWindow_(parentWindow), report_(std::move(report)) {}

    // While unattended no window appears. A question without an answer is an error that names it.
    bool isUnattended() const { return isUnattended_; }
    void setUnattended(bool unattended) { isUnattended_ = unattended; }
    void setAnswer(std::string_view name, std::string answer) {
        answers_.set(name, std::move(answer));
    }

    // Nothing when the user cancelled, an answer is missing, or no window could be made.
    Answers ask(const Question& question);

    // Closes the window of a question, or a message box, as its Cancel button does.
    void cancelQuestion();

    // A box with OK and Cancel.
    Confirmation confirm(const com::Bstr& text);

private:
    Answers askUnattended(const Question& question) const;
    Answers askUser(const Question& question);
    Confirmation confirmUnattended() const;

    PreparedAnswers answers_;
    const long& parentWindow_;
    ErrorReport report_;
    bool isUnattended_ = false;
    QuestionDialog* open_ = nullptr;
    ClosableBox box_;
};

}  // namespace kel::script
