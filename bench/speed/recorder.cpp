// kel_recorder PORT PORT FOLDER: measures the recorder dialog on two virtual instruments, one with
// ten thousand files on its card, one with a large file that is downloaded into the folder. Prints
// a line for each figure: its name, and the value of each round.

#include <winsock2.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/speed/empty_settings.h"
#include "bench/speed/measure.h"
#include "bench/speed/wire_end.h"
#include "com/apartment.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"
#include "resources/resource_ids.h"
#include "settings/settings_key.h"
#include "settings/vocabulary.h"

namespace {

using namespace kel;
using bench::create;
using bench::now;
using bench::print;

constexpr wchar_t kCaption[] = L"Recorder";
constexpr UINT kAsked = WM_APP;
constexpr DWORD kDownloadTime = 12000;

class Link {
public:
    explicit Link(const wchar_t* port)
        : stream_(bench::connectTo(port)),
          communicator_(create<IKelCommunicator>(L"BenchLink.Communicator")) {
        com::check(communicator_->put_Port(stream_.Get()), communicator_);
        com::check(communicator_.As(&recorder_));
    }
    ~Link() {
        communicator_->put_Port(nullptr);
        stream_->Close();
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    IKelCommunicator* communicator() const { return communicator_.Get(); }

    // What the dialog asks of the link when it opens, and nothing else.
    double listing() const {
        const double begin = now();
        com::check(recorder_->SetLinkRate(115200), recorder_);
        com::check(recorder_->SetRate(57600), recorder_);
        com::ComPtr<ICollection> files;
        com::check(recorder_->ReadListing(&files), recorder_);
        LONGLONG used = 0;
        LONGLONG capacity = 0;
        com::check(recorder_->CardSpace(&used, &capacity), recorder_);
        long count = 0;
        com::check(files->get_Count(&count), files);
        if (count != 10000) throw com::Error(E_FAIL, L"the card has other files");
        for (long index = 0; index < count; ++index) {
            com::Variant item;
            com::check(files->get_Item(com::Variant(index).get(), item.put()), files);
            com::ComPtr<IRecorderFile> file;
            com::check(item.get().punkVal->QueryInterface(IID_PPV_ARGS(&file)));
            com::Bstr name;
            DATE time = 0;
            LONGLONG size = 0;
            com::check(file->get_Name(name.put()), file);
            com::check(file->get_Size(&size), file);
            com::check(file->get_Time(&time), file);
            com::check(recorder_->SelectFile(name.get()), recorder_);
        }
        return now() - begin;
    }

private:
    com::ComPtr<INetworkStream> stream_;
    com::ComPtr<IKelCommunicator> communicator_;
    com::ComPtr<IRecorderAccess> recorder_;
};

// Shows the dialog. `ready` is called on its thread, once, when its directory has been read.
void show(const Link& link, std::function<void(HWND)> ready) {
    static std::function<void(HWND)> whenReady;
    struct Look {
        static void CALLBACK now(HWND, UINT, UINT_PTR, DWORD) {
            const HWND window = FindWindowW(nullptr, kCaption);
            wchar_t state[20] = L"";
            if (window) GetDlgItemTextW(window, IDC_RECORDER_STATE, state, 20);
            if (!whenReady || std::wstring_view(state) != L"Ready") return;
            std::exchange(whenReady, nullptr)(window);
        }
    };
    whenReady = std::move(ready);
    const auto dialog = create<IRecorderDialog>(L"KelUtils.RecorderDialog");
    com::check(dialog->put_Communicator(link.communicator()), dialog);
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, Look::now);
    VARIANT_BOOL result = VARIANT_FALSE;
    const HRESULT code = dialog->ShowModal(0, &result);
    KillTimer(nullptr, timer);
    com::check(code, dialog);
    if (whenReady) throw com::Error(E_FAIL, L"the directory was not read");
}

// What the dialog takes beyond the link's own time.
double listing(const Link& link) {
    const double own = link.listing();
    const double begin = now();
    double shown = 0;
    show(link, [&](HWND window) {
        shown = now();
        PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    });
    return shown - begin - own;
}

// The milliseconds in which 99 of 100 messages are answered while a download runs.
class Answers {
public:
    Answers()
        : window_(CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                nullptr)) {
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
    ~Answers() {
        if (asking_.joinable()) asking_.join();
        DestroyWindow(window_);
    }
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;

    // Asks on a thread of its own, then has the dialog closed and its question answered.
    void begin(HWND dialog) {
        asking_ = std::thread([this, dialog] {
            Sleep(500);  // until the download has begun
            const double begin = now();
            for (std::size_t i = 0; i < asked_.size() && now() - begin < kDownloadTime; ++i) {
                asked_[i] = now();
                PostMessageW(window_, kAsked, i, 0);
                Sleep(10);
            }
            wchar_t caption[40] = L"";
            GetDlgItemTextW(dialog, IDC_RECORDER_DOWNLOAD, caption, 40);
            wasRunning_ = std::wstring_view(caption) == L"Cancel";
            PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
            HWND question = nullptr;
            while (IsWindow(dialog) && !question) {
                question = FindWindowW(nullptr, L"Cancel Download ?");
                Sleep(10);
            }
            PostMessageW(question, WM_COMMAND, IDYES, 0);
        });
    }

    double result() {
        asking_.join();
        if (!wasRunning_ || times_.size() < 300)
            throw com::Error(E_FAIL, L"the download was over too soon");
        std::sort(times_.begin(), times_.end());
        return times_[times_.size() * 99 / 100];
    }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wide, LPARAM longer) {
        if (message != kAsked) return DefWindowProcW(window, message, wide, longer);
        auto* self = reinterpret_cast<Answers*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        self->times_.push_back(now() - self->asked_[wide]);
        return 0;
    }

    HWND window_;
    std::vector<double> asked_ = std::vector<double>(2000);
    std::vector<double> times_;
    std::atomic<bool> wasRunning_ = false;
    std::thread asking_;
};

double answers(const Link& link) {
    Answers answers;
    show(link, [&](HWND window) {
        PostMessageW(window, WM_COMMAND, IDC_RECORDER_SELECT_ALL, 0);
        PostMessageW(window, WM_COMMAND, IDC_RECORDER_DOWNLOAD, 0);
        answers.begin(window);
    });
    return answers.result();
}

void measure(wchar_t** arguments) {
    const com::Apartment apartment;
    const bench::EmptySettings settings;
    settings::WriteStringSetting(settings::SettingsKey::forWriting(settings::recorder::kKey),
                                 settings::recorder::kDownloadFolder,
                                 com::narrow(std::wstring_view(arguments[3])));
    std::vector<double> times;
    {
        const Link link(arguments[1]);
        for (int round = 0; round < 3; ++round)
            times.push_back(listing(link));
    }
    print("recorder-listing", times);
    times.clear();
    const Link link(arguments[2]);
    for (int round = 0; round < 2; ++round)
        times.push_back(answers(link));
    print("recorder-answers", times);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    WSADATA sockets;
    if (count != 4 || WSAStartup(MAKEWORD(2, 2), &sockets) != 0) return 2;
    try {
        measure(arguments);
        return 0;
    } catch (const std::exception&) {
        std::fprintf(stderr, "kel_recorder: %s\n",
                     com::narrow(com::textOfCurrentException()).c_str());
        return 1;
    }
}
