#pragma once
// The dialog in which a network connection is described.

#include <optional>
#include <string>

#include "dialogs/connect/model/connection_list.h"
#include "ui/dialog.h"

namespace kel::connect {

class ConnectionDialog final : public ui::Dialog {
public:
    ConnectionDialog(com::ObjectCore& component, NetworkConnection connection)
        : Dialog(&component), connection_(std::move(connection)) {}

    // The connection as the user wants it; nothing when he cancels.
    std::optional<NetworkConnection> ask(HWND owner);

protected:
    void initialise() override;
    bool command(int control, int notification) override;

private:
    NetworkConnection connection_;
};

}  // namespace kel::connect
