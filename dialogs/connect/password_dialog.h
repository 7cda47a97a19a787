#pragma once
// The dialog that asks for the password of a gateway.

#include <optional>
#include <string>

#include "ui/dialog.h"

namespace kel::connect {

struct GivenPassword {
    std::wstring text;
    bool isKept = false;  // for later attempts of the same dialog
};

class PasswordDialog final : public ui::Dialog {
public:
    PasswordDialog(com::ObjectCore& component, std::wstring password)
        : Dialog(&component), given_{.text = std::move(password)} {}

    // Nothing when the user cancels.
    std::optional<GivenPassword> ask(HWND owner);

protected:
    void initialise() override;
    bool command(int control, int notification) override;

private:
    GivenPassword given_;
};

}  // namespace kel::connect
