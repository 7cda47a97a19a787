#pragma once
// The list of network connections, kept and connected: what the dialog and the page have in common.

#include <windows.h>

#include <commctrl.h>

#include <optional>

#include "dialogs/connect/form.h"
#include "dialogs/connect/model/connection_list.h"
#include "dialogs/connect/network_link.h"
#include "dialogs/connect/password_dialog.h"

namespace kel::connect {

class NetworkForm : public Form {
public:
    NetworkForm(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link)
        : Form(&component), link_(std::move(link)) {}

    // Connects the link to the selected connection, which moves to the front. False when there is
    // none, or it does not answer: that is shown. Throws com::Error when the link fails.
    bool connect();

    void leave() override { link_.giveUp(); }

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> notify(const NMHDR& notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    std::optional<LRESULT> intercepted(HWND control, UINT message, WPARAM wide,
                                       LPARAM longer) override;
    int statusLine() const override;

    // Whether the link is connected so already, and is to be left alone.
    virtual bool isConnected(const NetworkConnection&) { return false; }
    // The gateway wants a password, or another one than the connection's. Nothing when there is
    // none to give.
    virtual std::optional<GivenPassword> askPassword(const NetworkConnection&) {
        return std::nullopt;
    }
    NetworkLink& link() { return link_; }

private:
    bool reach(NetworkConnection connection, std::size_t index);

    void fillTree();
    HTREEITEM insert(std::size_t index);
    std::optional<std::size_t> selected() const;
    std::size_t indexOf(HTREEITEM item) const;
    void select(HTREEITEM item);

    void addConnection();
    void editConnection();
    void removeConnection();

    NetworkLink link_;
    HWND tree_ = nullptr;
    ConnectionList list_;
    // What is stored is known: until then nothing may be written over it.
    bool isLoaded_ = false;
};

}  // namespace kel::connect
