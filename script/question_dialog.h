#pragma once
// The window of a script's question.

#include <optional>
#include <string>
#include <vector>

#include "script/engine/question.h"
#include "script/model/form_layout.h"
#include "ui/dialog.h"
#include "ui/row_pane.h"

namespace kel::script {

class QuestionDialog final : public ui::Dialog {
public:
    // The first field; the others follow in the order of the controls.
    static constexpr WORD kFirstField = 100;

    // `question` must outlive the dialog.
    explicit QuestionDialog(const Question& question);

    // Nothing when the user cancelled. Throws where no window can be made.
    Answers ask(HWND owner);

    // Ends the open dialog as its Cancel button does.
    void cancel() { end(IDCANCEL); }

protected:
    void initialise() override;
    HWND initialFocus() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;

private:
    void addRows(ui::DialogTemplate& description) const;
    void fill(HWND field, std::size_t row);
    HWND field(std::size_t row) const;
    std::string answer(std::size_t row) const;

    const Question& question_;
    Form form_;
    FormLayout layout_;
    std::optional<ui::RowPane> pane_;
    std::vector<std::string> answers_;
};

}  // namespace kel::script
