#pragma once
// The page of a session over a serial port.

#include <string>

#include "dialogs/connect/serial_form.h"
#include "dialogs/connect/session_page.h"
#include "dialogs/connect/session_store.h"

namespace kel::connect {

// How the page, and what connects without a window, ask the link.
inline constexpr SerialRules kSessionRules{.putsSameRate = false};

// Why a session's port did not open.
std::wstring sessionFailureText(const std::wstring& port, DWORD error);

class SerialPage final : public SessionPageOf<SerialForm> {
public:
    SerialPage(com::ObjectCore& component, const com::ComPtr<IKelCommunicator>& link,
               std::wstring application)
        : SessionPageOf(component, link), application_(std::move(application)) {}

    bool carryOut() override;

protected:
    void initialise() override;
    SerialRules rules() const override { return kSessionRules; }
    std::wstring failureText(const std::wstring& port, DWORD error) const override {
        return sessionFailureText(port, error);
    }
    std::wstring firstPort() override;
    long firstRate() override;
    void connected(const std::wstring& port, long rate) override;

private:
    std::wstring application_;
    RememberedPort remembered_;
};

}  // namespace kel::connect
