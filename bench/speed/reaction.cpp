// kel_reaction SCRIPT: measures what a user feels, through the registered components. Prints a
// line for each figure: its name, and the milliseconds of each round.

#include "bench/speed/empty_settings.h"
#include "bench/speed/measure.h"
#include "bench/speed/wire_end.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "com/apartment.h"
#include "com/error.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"
#include "settings/settings_list.h"
#include "settings/vocabulary.h"

namespace {

using namespace kel;
using bench::create;
using bench::now;
using bench::print;
using bench::WireEnd;

constexpr UINT kCancelMessage = WM_APP;
constexpr DWORD kAnswerDelay = 300;  // longer than the pause after a line, so that a wait is on
constexpr double kYield = 1;         // the wait that is prescribed before each line

// A preprocessor on a link to a wire end. A message asks it to cancel, as a host's button would.
class Connection {
public:
    explicit Connection(int port)
        : preprocessor(create<IPreprocessorControl>(L"KelUtils.Preprocessor")),
          communicator_(create<IKelCommunicator>(L"BenchLink.Communicator")),
          stream_(bench::connectTo(std::to_wstring(port))) {
        com::check(stream_->put_IdleProcessing(VARIANT_TRUE), stream_);
        com::check(communicator_->put_Port(stream_.Get()), communicator_);
        com::check(preprocessor->put_Communicator(communicator_.Get()), preprocessor);
        com::check(preprocessor->put_Unattended(VARIANT_TRUE), preprocessor);
    }
    ~Connection() {
        preprocessor->put_Communicator(nullptr);
        communicator_->put_Port(nullptr);
        stream_->Close();
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool run(const com::Bstr& script) {
        VARIANT_BOOL ran = VARIANT_FALSE;
        com::check(preprocessor->PreprocessAndRun(script.get(), &ran), preprocessor);
        return com::isTrue(ran);
    }

    const com::ComPtr<IPreprocessorControl> preprocessor;

private:
    com::ComPtr<IKelCommunicator> communicator_;
    com::ComPtr<INetworkStream> stream_;
};

// Cancels the run of a preprocessor when the message comes.
class CancelWindow {
public:
    explicit CancelWindow(IPreprocessorControl* preprocessor) {
        window_ = CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  GetModuleHandleW(nullptr), nullptr);
        if (!window_) throw com::lastError();
        SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(preprocessor));
        SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&receive));
    }
    ~CancelWindow() { DestroyWindow(window_); }
    CancelWindow(const CancelWindow&) = delete;
    CancelWindow& operator=(const CancelWindow&) = delete;

    void post() const { PostMessageW(window_, kCancelMessage, 0, 0); }

private:
    static LRESULT CALLBACK receive(HWND window, UINT message, WPARAM first, LPARAM second) {
        if (message != kCancelMessage) return DefWindowProcW(window, message, first, second);
        const LONG_PTR preprocessor = GetWindowLongPtrW(window, GWLP_USERDATA);
        reinterpret_cast<IPreprocessorControl*>(preprocessor)->Cancel();
        return 0;
    }

    HWND window_;
};

com::Bstr readScript(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) throw com::Error(E_FAIL, L"cannot read the script");
    return com::Bstr(text);
}

// From the call to the first byte. The run is then cancelled.
double firstByte(const com::Bstr& script) {
    double arrival = 0;
    const CancelWindow* cancel = nullptr;
    WireEnd wire({[&](double time) {
                      if (arrival == 0) arrival = time;
                  },
                  [&](WireEnd&, std::string_view, double) { cancel->post(); }});
    Connection connection(wire.port());
    const CancelWindow window(connection.preprocessor.Get());
    cancel = &window;
    const double call = now();
    if (connection.run(script)) throw com::Error(E_FAIL, L"the run was not cancelled");
    return arrival - call;
}

// From each OK on the wire to the first byte of the next line, less the prescribed wait.
std::vector<double> nextLine(int rounds) {
    std::wstring script;
    for (int i = 0; i < rounds; ++i)
        script += L"start\r\n#WAIT_OK 10\r\n";
    script += L"stop\r\n";

    std::vector<double> times;
    double answered = 0;
    WireEnd wire({[&](double time) {
                      if (answered != 0) times.push_back(time - answered - kYield);
                  },
                  [&](WireEnd& end, std::string_view line, double) {
                      if (line != "start") return;
                      Sleep(kAnswerDelay);
                      answered = now();
                      end.send("OK\r\n");
                  }});
    Connection connection(wire.port());
    if (!connection.run(com::Bstr(script))) throw com::Error(E_FAIL, L"the script failed");
    return times;
}

// From the request to the return of the call, `delay` milliseconds after the line before the wait.
double cancelled(const wchar_t* directive, DWORD delay) {
    double request = 0;
    const CancelWindow* cancel = nullptr;
    WireEnd wire({[](double) {},
                  [&](WireEnd&, std::string_view, double) {
                      if (request != 0) return;  // the empty line after the error
                      Sleep(delay);
                      request = now();
                      cancel->post();
                  }});
    Connection connection(wire.port());
    const CancelWindow window(connection.preprocessor.Get());
    cancel = &window;
    const com::Bstr script(std::wstring(L"start\r\n") + directive + L" 60\r\nstop\r\n");
    if (connection.run(script)) throw com::Error(E_FAIL, L"the run was not cancelled");
    return now() - request;
}

// From the call that shows a dialog until it has been painted and waits for the user, who closes
// it.
template <class Dialog>
double untilShown(const com::ComPtr<Dialog>& dialog, const wchar_t* caption) {
    static const wchar_t* title;
    static double shown;
    // A timer comes when nothing is left to be painted.
    struct Close {
        static void CALLBACK whenShown(HWND, UINT, UINT_PTR, DWORD) {
            const HWND window = FindWindowW(nullptr, title);
            if (!window || !IsWindowVisible(window)) return;
            if (shown == 0) shown = now();
            PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        }
    };
    title = caption;
    shown = 0;
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, Close::whenShown);
    VARIANT_BOOL result = VARIANT_FALSE;
    const double call = now();
    com::check(dialog->ShowModal(0, &result), dialog);
    KillTimer(nullptr, timer);
    if (shown == 0) throw com::Error(E_FAIL, L"the dialog was not seen");
    return shown - call;
}

double manyOptions() {
    constexpr wchar_t kTitle[] = L"Many options";
    const auto dialog = create<IMultiSelectDialog>(L"KelUtils.MultiSelectDialog");
    com::check(dialog->put_Title(com::Bstr(kTitle).get()), dialog);
    for (int i = 0; i < 10000; ++i) {
        const com::Bstr name(L"Option number " + std::to_wstring(i));
        com::check(dialog->Add(name.get(), com::variantBool(i % 3 == 0)), dialog);
    }
    return untilShown(dialog, kTitle);
}

double manyConnections() {
    const bench::EmptySettings settings;
    const std::vector<settings::ListEntry> entries(1000, {"Mooring", "10.20.0.11", "4444"});
    settings::writeList(settings::connections::kKey, settings::connections::kFields, entries);
    if (settings::readList(settings::connections::kKey, settings::connections::kFields) != entries)
        throw com::Error(E_FAIL, L"the connections are not stored");
    const auto dialog = create<IConnectKelGateDialog>(L"KelUtils.ConnectKelGateDialog");
    const auto link = create<IKelCommunicator>(L"BenchLink.Communicator");
    com::check(dialog->put_Communicator(link.Get()), dialog);
    return untilShown(dialog, L"Connect");
}

template <class Measure>
void printRounds(const char* name, Measure&& measure) {
    std::vector<double> times;
    for (int i = 0; i < 5; ++i)
        times.push_back(measure());
    print(name, times);
}

void measure(const char* scriptPath) {
    const com::Apartment apartment;
    const com::Bstr script = readScript(scriptPath);
    std::vector<double> times;
    for (int i = 0; i < 7; ++i)
        times.push_back(firstByte(script));
    print("first-byte", times);
    print("next-line", nextLine(15));
    for (const wchar_t* directive : {L"#WAIT", L"#WAIT_OK", L"#WAIT_PROMPT"}) {
        times.clear();
        // Spread over more than the second that the wait is made of.
        for (DWORD delay = 350; delay < 1500; delay += 230)
            times.push_back(cancelled(directive, delay));
        print(com::narrow(directive).c_str(), times);
    }
    printRounds("many-options", manyOptions);
    printRounds("many-connections", manyConnections);
}

}  // namespace

int main(int count, char** arguments) {
    WSADATA sockets;
    if (count != 2 || WSAStartup(MAKEWORD(2, 2), &sockets) != 0) return 2;
    try {
        measure(arguments[1]);
        return 0;
    } catch (const std::exception&) {
        std::fprintf(stderr, "kel_reaction: %s\n",
                     com::narrow(com::textOfCurrentException()).c_str());
        return 1;
    }
}
