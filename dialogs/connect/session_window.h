#pragma once
// The window of the new session dialog: one of three pages, and what is remembered of the choice.

#include "dialogs/connect/model/session_options.h"
#include "dialogs/connect/network_page.h"
#include "dialogs/connect/open_file_page.h"
#include "dialogs/connect/serial_page.h"

namespace kel::connect {

class SessionWindow final : public ui::Dialog {
public:
    // `values` outlives the window.
    SessionWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link,
                  SessionValues& values);

    // True when a connection was made or a file opened.
    bool run(HWND owner);

protected:
    void initialise() override;
    HWND initialFocus() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    void showFailure(const std::wstring& text) override;

private:
    PresentPort presentPort() const;
    SessionPage& page(SessionOption option);
    void createPage(SessionPage& page, WORD resource);
    void choose(SessionOption option);
    void finish();

    com::ComPtr<IKelCommunicator> link_;
    SessionValues& values_;
    SessionOption option_ = SessionOption::Serial;
    SerialPage serial_;
    NetworkPage network_;
    OpenFilePage file_;
};

}  // namespace kel::connect
