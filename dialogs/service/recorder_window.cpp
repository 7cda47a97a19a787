#include "dialogs/service/recorder_window.h"

#include <commctrl.h>
#include <shlobj.h>

#include "com/creation.h"
#include "com/port.h"
#include "com/scoped.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "settings/settings_key.h"
#include "settings/vocabulary.h"
#include "ui/model/formats.h"
#include "ui/redraw_pause.h"

namespace kel::service {
namespace {

constexpr std::size_t kLongestFolder = 520;
constexpr UINT_PTR kRunHereTimer = 1;
constexpr UINT_PTR kListingTimer = 2;
constexpr UINT kListingPeriod = 1000;  // milliseconds
constexpr UINT kRunHereDelay = 10;     // milliseconds
constexpr UINT kOnlyFolders = BIF_RETURNONLYFSDIRS | BIF_RETURNFSANCESTORS;

com::Variant itemOf(const com::ComPtr<ICollection>& collection, long index) {
    com::Variant item;
    com::check(collection->get_Item(com::Variant(index).get(), item.put()), collection);
    return item;
}

com::ComPtr<IRecorderFile> fileOf(const com::Variant& item) {
    com::ComPtr<IRecorderFile> file;
    const bool isObject = item.type() == VT_DISPATCH || item.type() == VT_UNKNOWN;
    IUnknown* object = isObject ? item.get().punkVal : nullptr;
    if (!object || FAILED(object->QueryInterface(IID_PPV_ARGS(&file))))
        throw com::Error(E_NOINTERFACE, L"An entry of the listing is no file",
                         __uuidof(IRecorderFile));
    return file;
}

long countOf(const com::ComPtr<ICollection>& collection) {
    long count = 0;
    com::check(collection->get_Count(&count), collection);
    return count;
}

void removeAll(const com::ComPtr<ICollection>& collection) {
    if (!collection) return;
    for (long index = countOf(collection); index-- > 0;)
        com::check(collection->Remove(com::Variant(index).get()), collection);
}

bool isFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring sizeText(LONGLONG bytes) {
    return com::widen(ui::sizeText(bytes));
}

}  // namespace

RecorderWindow::RecorderWindow(com::ObjectCore& component, com::ComPtr<IKelCommunicator> link,
                               com::ComPtr<IRecorderAccess> recorder)
    : Dialog(&component),
      link_(std::move(link)),
      recorder_(std::move(recorder)),
      events_(recorder_, board_),
      worker_(recorder_, board_) {}

int RecorderWindow::statusLine() const {
    return IDC_RECORDER_STATUS;
}

RecorderRows RecorderWindow::rows() const {
    return RecorderRows(control(IDC_RECORDER_LIST));
}

// At once, controls included: what follows may take long.
void RecorderWindow::update() {
    RedrawWindow(window(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
}

// Over what is open already: only the uppermost box takes input then.
int RecorderWindow::showBox(const std::wstring& text, const std::wstring& caption, UINT style) {
    return MessageBoxW(GetLastActivePopup(window()), text.c_str(), caption.c_str(), style);
}

void RecorderWindow::initialise() {
    board_->window = window();
    const com::Scoped working(isWorking_, true);
    tellLinkRate();
    rows().addColumns();
    ShowWindow(window(), SW_SHOW);
    update();
    fillSettings();
    try {
        applyRate();
        if (!isClosing_) readDirectory();
    } catch (const com::Error&) {
        // What was aborted because the user leaves is no failure.
        if (!isClosing_) throw;
    }
}

void RecorderWindow::tellLinkRate() {
    const auto port = com::presentPortOf(link_);
    long rate = 0;
    com::check(port->get_BaudRate(&rate), port);
    com::check(recorder_->SetLinkRate(rate), recorder_);
}

void RecorderWindow::fillSettings() {
    namespace names = settings::recorder;
    const HWND rates = control(IDC_RECORDER_RATE);
    for (const long rate : kRecorderRates) {
        const auto index = SendMessageW(rates, CB_ADDSTRING, 0,
                                        reinterpret_cast<LPARAM>(std::to_wstring(rate).c_str()));
        SendMessageW(rates, CB_SETITEMDATA, static_cast<WPARAM>(index), rate);
    }
    const std::wstring stored = com::widen(
        settings::ReadStringSetting(names::kKey, names::kDownloadRate, kDefaultRecorderRate));
    const auto chosen = SendMessageW(rates, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                     reinterpret_cast<LPARAM>(stored.c_str()));
    SendMessageW(rates, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
    SendMessageW(control(IDC_RECORDER_FOLDER), EM_LIMITTEXT, kLongestFolder, 0);
    setText(IDC_RECORDER_FOLDER, com::widen(settings::ReadStringSetting(
                                     names::kKey, names::kDownloadFolder, kDefaultDownloadFolder)));
}

void RecorderWindow::storeSettings() const {
    namespace names = settings::recorder;
    if (SendMessageW(control(IDC_RECORDER_RATE), CB_GETCURSEL, 0, 0) == CB_ERR) return;
    const auto key = settings::SettingsKey::forWriting(names::kKey);
    settings::WriteStringSetting(key, names::kDownloadRate, com::narrow(text(IDC_RECORDER_RATE)));
    settings::WriteStringSetting(key, names::kDownloadFolder, com::narrow(folder()));
}

std::wstring RecorderWindow::folder() const {
    return text(IDC_RECORDER_FOLDER).substr(0, kLongestFolder);
}

void RecorderWindow::applyRate() {
    const HWND rates = control(IDC_RECORDER_RATE);
    const auto chosen = SendMessageW(rates, CB_GETCURSEL, 0, 0);
    if (chosen == CB_ERR) return;
    const auto rate =
        static_cast<long>(SendMessageW(rates, CB_GETITEMDATA, static_cast<WPARAM>(chosen), 0));
    com::check(recorder_->SetRate(rate), recorder_);
}

void RecorderWindow::browse() {
    BROWSEINFOW question{};
    question.hwndOwner = window();
    question.lpszTitle = L"Select the Export Directory";
    question.ulFlags = kOnlyFolders;
    const LPITEMIDLIST chosen = SHBrowseForFolderW(&question);
    if (!chosen) return;
    wchar_t path[MAX_PATH] = L"";
    const bool hasPath = SHGetPathFromIDListW(chosen, path) != FALSE;
    ILFree(chosen);
    if (hasPath) setText(IDC_RECORDER_FOLDER, path);
}

void RecorderWindow::readDirectory() {
    rows().clear();
    setText(IDC_RECORDER_FILES, L"Files: none");
    setText(IDC_RECORDER_USED, L"");
    setText(IDC_RECORDER_FREE, L"");
    setText(IDC_RECORDER_STATE, L"Reading directory...");
    update();
    listingStart_ = board_->start = GetTickCount();
    // Its messages come where the recorder runs them while it reads.
    SetTimer(window(), kListingTimer, kListingPeriod, nullptr);
    try {
        readFiles();
    } catch (...) {
        KillTimer(window(), kListingTimer);
        setText(IDC_RECORDER_STATE, L"");
        throw;
    }
    if (!listingText_.empty() && text(IDC_RECORDER_STATUS) == listingText_) showStatus({});
    setText(IDC_RECORDER_STATE, L"Ready");
    setText(IDC_RECORDER_TIME, L"");
}

// Where the recorder itself says something, that stays.
void RecorderWindow::showListing(long listed, long total) {
    const std::wstring now =
        listingText(GetTickCount() - listingStart_, static_cast<std::uint32_t>(listed),
                    static_cast<std::uint32_t>(total));
    if (now.empty() || now == listingText_ || text(IDC_RECORDER_STATUS) != listingText_) return;
    listingText_ = now;
    showStatus(now);
}

void RecorderWindow::readFiles() {
    com::ComPtr<ICollection> files;
    com::check(recorder_->ReadListing(&files), recorder_);
    // Its user need not wait for more calls, should it have gone on in spite of the abort.
    if (isClosing_) return;
    if (!files)
        throw com::Error(E_POINTER, L"The recorder gave no listing", __uuidof(IRecorderAccess));
    files_ = files;
    const long count = countOf(files);
    setText(IDC_RECORDER_FILES, L"Files: " + std::to_wstring(count));
    showSpace();

    const ui::RedrawPause pause(control(IDC_RECORDER_LIST));
    RecorderRows list = rows();
    list.reserve(count);
    KillTimer(window(), kListingTimer);
    listingStart_ = GetTickCount();
    // The recorder may run the dialog's messages, and the user close it.
    for (long index = 0; index < count && !isClosing_; ++index) {
        const auto file = fileOf(itemOf(files, index));
        com::Bstr name;
        com::check(file->get_Name(name.put()), file);
        com::check(recorder_->SelectFile(name.get()), recorder_);
        list.add(std::wstring(name.view()), file);
        showListing(index + 1, count);
    }
}

void RecorderWindow::showSpace() {
    LONGLONG used = 0;
    LONGLONG capacity = 0;
    com::check(recorder_->CardSpace(&used, &capacity), recorder_);
    setText(IDC_RECORDER_USED, sizeText(used));
    setText(IDC_RECORDER_FREE, sizeText(capacity - used));
}

bool RecorderWindow::command(int control, int notification) {
    // What a sent message presses while the end is waited for comes too late.
    if (isWaiting_) return true;
    if (control == IDCANCEL) {
        whenIdle([this] { close(); });
        return true;
    }
    // The link's calls may run messages: what would disturb them is left out.
    if (isWorking_) return true;
    switch (control) {
        case IDC_RECORDER_SELECT_ALL:
            rows().selectAll();
            return true;
        case IDC_RECORDER_RATE:
            if (notification == CBN_SELCHANGE) whenIdle([this] { applyRate(); });
            return true;
        case IDC_RECORDER_BROWSE:
            browse();
            return true;
        case IDC_RECORDER_FORMAT:
            whenIdle([this] { format(); });
            return true;
        case IDC_RECORDER_DOWNLOAD:
            // Its caption is "Cancel" as long as something runs.
            if (board_->operation == Operation::None) {
                download();
            } else {
                whenIdle({});
            }
            return true;
        default:
            // Success is nothing that this dialog ends with.
            return control == IDOK;
    }
}

void RecorderWindow::download() {
    const com::Scoped working(isWorking_, true);
    const auto chosen = selection();
    const std::wstring path = asFolder(folder());
    if (!isClosing_ && prepareFolder(path)) start(Operation::Download, chosen, path);
}

com::ComPtr<ICollection> RecorderWindow::selection() {
    auto chosen = com::createStarted<ICollection>(link::kCollectionClass);
    if (!chosen)
        throw com::Error(E_POINTER, L"The link's collection component is not installed",
                         __uuidof(ICollection));
    for (const long row : rows().selected())
        com::check(chosen->Add(itemOf(files_, row).get()), chosen);
    return chosen;
}

bool RecorderWindow::prepareFolder(const std::wstring& path) {
    if (isFolder(path) || CreateDirectoryW(path.c_str(), nullptr)) return true;
    showBox(L"Unable to create folder!", L"", MB_OK);
    return false;
}

void RecorderWindow::format() {
    const com::Scoped working(isWorking_, true);
    const int answer = showBox(
        L"WARNING: Formatting will erase ALL data on the memory card.\n"
        L"Select OK to format the memory card or CANCEL to abort.",
        L"Format?", MB_OKCANCEL);
    if (answer != IDOK || isClosing_) return;
    removeAll(selection_);
    if (!start(Operation::Format, nullptr, {})) return;
    forgetFiles();
}

void RecorderWindow::forgetFiles() {
    removeAll(files_);
    rows().clear();
    setText(IDC_RECORDER_FILES, L"Files: none");
    setText(IDC_RECORDER_USED, L"0 kB");
    LONGLONG used = 0;
    LONGLONG capacity = 0;
    com::check(recorder_->CardSpace(&used, &capacity), recorder_);
    setText(IDC_RECORDER_FREE, sizeText(capacity));
}

bool RecorderWindow::start(Operation operation, com::ComPtr<ICollection> chosen,
                           const std::wstring& path) {
    // The end of what ran before is over then.
    showNews();
    board_->isCancelling = false;
    board_->operation = operation;
    if (chosen) selection_ = chosen;
    bool isStarted = false;
    try {
        isStarted = worker_.start(std::move(chosen), path);
    } catch (...) {
        board_->operation = Operation::None;
        throw;
    }
    if (!isStarted) {
        board_->operation = Operation::None;
        showBox(L"Unable to start thread", L"FATAL ERROR", MB_OK | MB_ICONSTOP);
        return false;
    }
    setText(IDC_RECORDER_DOWNLOAD, L"Cancel");
    return true;
}

void RecorderWindow::whenIdle(const Step& step) {
    if (board_->operation != Operation::None) {
        if (!mayCancel()) return;
        // It may have come to its end while the user thought about it.
        if (board_->operation != Operation::None) {
            cancelOperation();
            worker_.withdraw();
            // What runs waits for something below on this thread's stack, which has to be left
            // first.
            if (question_ || worker_.isRunningHere()) {
                if (question_) question_->refuse();
                if (step) next_ = step;
                return;
            }
        }
        waitForWorker();
    }
    showNews();
    if (step) step();
}

bool RecorderWindow::mayCancel() {
    if (isAsking_) return false;
    const com::Scoped asking(isAsking_, true);
    const Operation running = board_->operation;
    return showBox(cancelQuestion(running), cancelCaption(running), MB_YESNO | MB_ICONSTOP) ==
           IDYES;
}

void RecorderWindow::cancelOperation() {
    // From now on nobody is asked whether to replace a file.
    board_->isCancelling = true;
    try {
        com::check(recorder_->Abort(), recorder_);
    } catch (...) {
        board_->isCancelling = false;
        throw;
    }
}

std::optional<LRESULT> RecorderWindow::handle(UINT message, WPARAM, LPARAM longer) {
    if (message == confirmReplaceMessage())
        return static_cast<LRESULT>(confirmReplace(reinterpret_cast<const wchar_t*>(longer)));
    switch (message) {
        case RecorderBoard::kNewsMessage:
            showNews();
            return 0;
        case RecorderWorker::kRunHereMessage:
            runHere();
            return 0;
        case WM_DESTROY:
            storeSettings();
            return std::nullopt;
        default:
            return std::nullopt;
    }
}

void RecorderWindow::timer(UINT_PTR identifier) {
    if (identifier == kListingTimer) return showListing(0, 0);
    runHere();
}

// What has its loop or its call below on the stack could not come back before the end.
void RecorderWindow::runHere() {
    if (isWorking_ || isAsking_ || !IsWindowEnabled(window())) {
        SetTimer(window(), kRunHereTimer, kRunHereDelay, nullptr);
        return;
    }
    KillTimer(window(), kRunHereTimer);
    worker_.runHere();
}

void RecorderWindow::showNews() {
    const RecorderNews news = board_->take();
    if (news.progress) {
        const RecorderProgress& progress = *news.progress;
        const HWND bar = control(IDC_RECORDER_BAR);
        SendMessageW(bar, PBM_SETRANGE32, 0, static_cast<LPARAM>(progress.total));
        SendMessageW(bar, PBM_SETPOS, progress.done, 0);
        setText(IDC_RECORDER_TIME,
                remainingTimeText(progress.elapsed, progress.done, progress.total));
    }
    if (news.finishedAfter) setText(IDC_RECORDER_TIME, doneText(*news.finishedAfter));
    if (news.status) showStatus(*news.status);
    if (news.hasEnded) operationEnded();
}

void RecorderWindow::waitForWorker() {
    const com::Scoped waiting(isWaiting_, true);
    worker_.wait();
}

void RecorderWindow::operationEnded() {
    waitForWorker();
    setText(IDC_RECORDER_DOWNLOAD, L"Download");
    if (const Step next = std::exchange(next_, {})) next();
}

ReplaceAnswer RecorderWindow::confirmReplace(const wchar_t* fileName) {
    if (board_->isCancelling || isClosing_) return ReplaceAnswer::No;
    try {
        ReplaceDialog question(component(), fileName);
        const com::Scoped<ReplaceDialog*> asked(question_, &question);
        return question.ask(GetLastActivePopup(window()));
    } catch (...) {
        // A question that could not be asked was not answered with yes.
        SetWindowLongPtrW(window(), DWLP_MSGRESULT, static_cast<LONG_PTR>(ReplaceAnswer::No));
        throw;
    }
}

void RecorderWindow::close() {
    isClosing_ = true;
    if (question_) question_->refuse();
    // What the recorder is asked for below on the stack. One that cannot be aborted is waited for.
    if (isWorking_) recorder_->Abort();
    end(IDCANCEL);
}

void RecorderWindow::destroyed() {
    isClosing_ = true;
    board_->window = nullptr;
    if (board_->operation == Operation::None) return;
    board_->isCancelling = true;
    // Whether it takes that or not, its end is waited for.
    recorder_->Abort();
}

}  // namespace kel::service
