#pragma once
// The window of the firmware upload dialog.

#include <string>

#include "dialogs/service/model/transfer_progress.h"
#include "dialogs/service/uploader_events.h"
#include "ui/dialog.h"

namespace kel::service {

class UploadWindow final : public ui::Dialog, private UploadListener {
public:
    // `accessCode` is shown unless it is 0, and what the user types instead is put there.
    UploadWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link, std::wstring file,
                 long& accessCode)
        : Dialog(&component),
          link_(std::move(link)),
          file_(std::move(file)),
          accessCode_(accessCode) {}

    // True when the firmware has been loaded, and verified where that was wanted. Throws.
    bool load(HWND owner);

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    int statusLine() const override;

private:
    // What the user has chosen.
    struct Choices {
        long accessCode = 0;
        bool isHexadecimal = false;
        bool verifies = false;
        bool isFast = false;
    };

    void uploaderSays(std::wstring text) override;
    void uploaderProgresses(long done, long total) override;

    bool isChecked(int control) const;
    void start();
    void leave();
    void disableAll();
    bool transfer(const Choices& choices);
    template <class Call>
    bool carryOut(const wchar_t* text, const wchar_t* failure, Call&& call);
    void showProgress();

    com::ComPtr<IKelCommunicator> link_;
    std::wstring file_;
    long& accessCode_;
    TransferProgress progress_;
    bool wasStarted_ = false;
    bool isRunning_ = false;
    bool isLoaded_ = false;
};

}  // namespace kel::service
