#pragma once
// The question whether a file that exists is to be replaced.

#include <string>

#include "dialogs/service/recorder_board.h"
#include "ui/dialog.h"

namespace kel::service {

class ReplaceDialog final : public ui::Dialog {
public:
    ReplaceDialog(com::ObjectCore& component, std::wstring fileName)
        : Dialog(&component), fileName_(std::move(fileName)) {}

    // Throws com::Error.
    ReplaceAnswer ask(HWND owner);
    // Answers in the user's place, as soon as its loop comes round.
    void refuse() { answer(ReplaceAnswer::No); }

protected:
    void initialise() override;
    bool command(int control, int notification) override;

private:
    void answer(ReplaceAnswer answer) { end(static_cast<INT_PTR>(answer)); }

    std::wstring fileName_;
};

}  // namespace kel::service
