#include "dialogs/connect/network_page.h"

#include "com/scoped.h"

namespace kel::connect {

bool NetworkPage::carryOutAlone() {
    const com::Scoped alone(isAlone_, true);
    return connect();
}

bool NetworkPage::isConnected(const NetworkConnection& connection) {
    return link().isConnected(connection);
}

std::optional<GivenPassword> NetworkPage::askPassword(const NetworkConnection& connection) {
    if (isAlone_) return std::nullopt;
    return PasswordDialog(component(), connection.password).ask(window());
}

}  // namespace kel::connect
