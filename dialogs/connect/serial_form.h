#pragma once
// Choosing a serial port and its rate: what the dialog and the page have in common.

#include <array>
#include <string>

#include "dialogs/connect/form.h"
#include "dialogs/connect/model/serial_ports.h"
#include "dialogs/connect/serial_link.h"

namespace kel::connect {

class SerialForm : public Form {
public:
    SerialForm(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link)
        : Form(&component), link_(std::move(link)) {}

    // Connects the link to the chosen port. False when that does not open: the reason is shown.
    // Throws com::Error when the link fails.
    bool connect();

    // No further port is looked at, and none connected.
    void leave() override {
        isLeaving_ = true;
        link_.giveUp();
    }

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    int statusLine() const override;

    // Where the two forms differ.
    virtual SerialRules rules() const = 0;
    virtual std::wstring failureText(const std::wstring& port, DWORD error) const = 0;
    virtual std::wstring firstPort() { return link_.currentPort(); }
    virtual long firstRate();
    // A connection stands.
    virtual void connected(const std::wstring&, long) {}

    SerialLink& link() { return link_; }

private:
    void fillRates();
    void refresh();
    long chosenRate() const;
    void draw(const DRAWITEMSTRUCT& item) const;

    SerialLink link_;
    std::wstring port_;
    std::array<PortState, kPorts> states_{};
    bool isLeaving_ = false;
};

}  // namespace kel::connect
