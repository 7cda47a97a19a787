#pragma once
// The window of the recorder dialog.

#include <functional>
#include <memory>
#include <string>

#include "dialogs/service/recorder_board.h"
#include "dialogs/service/recorder_events.h"
#include "dialogs/service/recorder_rows.h"
#include "dialogs/service/recorder_worker.h"
#include "dialogs/service/replace_dialog.h"
#include "ui/dialog.h"

namespace kel::service {

// Where the window goes without being asked, what runs is aborted, and its end waited for.
class RecorderWindow final : public ui::Dialog {
public:
    // Throws com::Error.
    RecorderWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link,
                   com::ComPtr<IRecorderAccess> recorder);

protected:
    void initialise() override;
    bool command(int control, int notification) override;
    std::optional<LRESULT> handle(UINT message, WPARAM wide, LPARAM longer) override;
    void timer(UINT_PTR identifier) override;
    void destroyed() override;
    int statusLine() const override;

private:
    using Step = std::function<void()>;

    void tellLinkRate();
    void fillSettings();
    void storeSettings() const;
    std::wstring folder() const;
    void applyRate();
    void browse();

    void readDirectory();
    void readFiles();
    void showListing(long listed, long total);
    void showSpace();

    void download();
    void format();
    com::ComPtr<ICollection> selection();
    bool prepareFolder(const std::wstring& folder);
    bool start(Operation operation, com::ComPtr<ICollection> selection, const std::wstring& folder);
    void forgetFiles();

    // The busy gate: goes on with a step once nothing runs. The user is asked whether what runs
    // is to be cancelled.
    void whenIdle(const Step& step);
    bool mayCancel();
    void cancelOperation();

    void runHere();
    void showNews();
    void waitForWorker();
    void operationEnded();
    ReplaceAnswer confirmReplace(const wchar_t* fileName);
    void close();

    RecorderRows rows() const;
    void update();
    int showBox(const std::wstring& text, const std::wstring& caption, UINT style);

    com::ComPtr<IKelCommunicator> link_;
    com::ComPtr<IRecorderAccess> recorder_;
    std::shared_ptr<RecorderBoard> board_ = std::make_shared<RecorderBoard>();
    RecorderConnection events_;
    RecorderWorker worker_;

    com::ComPtr<ICollection> files_;
    com::ComPtr<ICollection> selection_;  // of the last download
    ReplaceDialog* question_ = nullptr;   // while it is asked
    Step next_;                           // to be done when what runs has ended
    DWORD listingStart_ = 0;              // tick at which the present step of the listing began
    std::wstring listingText_;            // on the status line
    bool isWorking_ = false;              // a handler that must not be entered again runs
    bool isWaiting_ = false;              // for the worker's end
    bool isAsking_ = false;               // whether to cancel
    bool isClosing_ = false;
};

}  // namespace kel::service
