// kel_pane: measures how quick and lasting the terminal's output pane is, beside a bare edit
// control. Prints a line for each figure: its name, and the value of each round.

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/speed/measure.h"
#include "bench/speed/wire_end.h"
#include "com/apartment.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"
#include "terminal/output_pane.h"

extern "C" {
BOOL WINAPI AtlAxWinInit();
HRESULT WINAPI AtlAxCreateControlEx(LPCOLESTR name, HWND window, IStream* stream,
                                    IUnknown** container, IUnknown** control, REFIID events,
                                    IUnknown* sink);
}

namespace {

using namespace kel;
using bench::now;
using bench::print;

constexpr std::size_t kMegabyte = 1 << 20;
constexpr DWORD kPaneStyle = WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE |
                             ES_READONLY | ES_NOHIDESEL | ES_AUTOVSCROLL | ES_AUTOHSCROLL;

class Window {
public:
    Window(const wchar_t* kind, DWORD style, HWND parent)
        : handle_(CreateWindowExW(0, kind, L"", style | WS_VISIBLE, 0, 0, 800, 500, parent, nullptr,
                                  GetModuleHandleW(nullptr), nullptr)) {
        if (!handle_) throw com::lastError();
    }
    ~Window() { DestroyWindow(handle_); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND get() const { return handle_; }

private:
    HWND handle_;
};

// An edit control in a window on the screen, with the output pane on it or bare.
struct Edit {
    Window frame{L"STATIC", WS_OVERLAPPEDWINDOW, nullptr};
    Window edit{L"EDIT", kPaneStyle, frame.get()};
    std::unique_ptr<terminal::OutputPane> pane;

    explicit Edit(bool isBare) {
        SendMessageW(edit.get(), EM_SETLIMITTEXT, 0x7FFFFFFE, 0);
        if (!isBare) pane = std::make_unique<terminal::OutputPane>(edit.get());
    }
};

void runMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

// As the streams of links do.
void feed(HWND edit, const std::wstring& piece) {
    const auto end = static_cast<WPARAM>(SendMessageW(edit, WM_GETTEXTLENGTH, 0, 0));
    SendMessageW(edit, EM_SETSEL, end, static_cast<LPARAM>(end));
    SendMessageW(edit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(piece.c_str()));
}

// What an instrument sends, in pieces that do not mind its lines.
class Pieces {
public:
    explicit Pieces(std::size_t size) : size_(size) {
        while (text_.size() < 64 * 1024)
            text_ += L"$DATA," + std::to_wstring(text_.size()) + L",12.0625,-3.5,35.021,OK\r\n";
    }
    std::wstring next() {
        if (from_ + size_ > text_.size()) from_ = 0;
        return text_.substr(std::exchange(from_, from_ + size_), size_);
    }

private:
    std::size_t size_;
    std::size_t from_ = 0;
    std::wstring text_;
};

// Until all of it is on the screen.
double feedAll(HWND edit, Pieces& pieces, std::size_t size) {
    const double begin = now();
    for (std::size_t fed = 0; fed < size;) {
        const std::wstring piece = pieces.next();
        feed(edit, piece);
        fed += piece.size();
        runMessages();
    }
    SendMessageW(edit, EM_GETLINECOUNT, 0, 0);
    UpdateWindow(edit);
    return now() - begin;
}

// How many times as fast as the bare control, in the same round.
std::vector<double> gain(std::size_t pieceSize) {
    constexpr std::size_t kFed = 64 * 1024;
    std::vector<double> gains;
    for (int round = 0; round < 3; ++round) {
        const auto timeOf = [&](bool isBare) {
            const Edit edit(isBare);
            Pieces pieces(pieceSize);
            runMessages();
            const double time = feedAll(edit.edit.get(), pieces, kFed);
            if (GetWindowTextLengthW(edit.edit.get()) < static_cast<int>(kFed))
                throw std::runtime_error("the text is not complete");
            return time;
        };
        const double bare = timeOf(true);
        gains.push_back(bare / timeOf(false));
    }
    return gains;
}

double processorTime() {
    FILETIME made, ended, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &made, &ended, &kernel, &user);
    const auto milliseconds = [](const FILETIME& time) {
        return static_cast<double>(
                   ULARGE_INTEGER{{time.dwLowDateTime, time.dwHighDateTime}}.QuadPart) /
               10000;
    };
    return milliseconds(kernel) + milliseconds(user);
}

// The milliseconds of processor time that each of six megabytes takes, the first of which fills the
// pane.
std::array<double, 6> megabytes() {
    const Edit edit(false);
    Pieces pieces(256);
    std::array<double, 6> times{};
    for (double& time : times) {
        const double used = processorTime();
        feedAll(edit.edit.get(), pieces, kMegabyte);
        time = processorTime() - used;
    }
    return times;
}

// By how many percent a megabyte at the limit costs more than the one before, over the last five.
// Two neighbours by themselves say less of that than of what else runs on the machine.
std::vector<double> growth() {
    std::vector<double> percent;
    for (int round = 0; round < 3; ++round) {
        const std::array<double, 6> times = megabytes();
        // The second is the first at the limit. From the middle of two to that of the last are
        // three.
        const double all = (times[4] + times[5]) / (times[1] + times[2]);
        percent.push_back(100 * (std::cbrt(all) - 1));
    }
    return percent;
}

struct Answers {
    double time;  // in which 99 of 100 posted messages are answered, in milliseconds
    double rate;  // KB a second, of which the pane took no more where it made its feeder wait
};

// While a full pane is offered 115 KB/s.
Answers answer() {
    constexpr UINT kAsked = WM_APP;
    constexpr double kDuration = 8000;
    constexpr double kBytesPerMillisecond = 115.2;
    const Edit edit(false);
    Pieces filling(4096);
    feedAll(edit.edit.get(), filling, kMegabyte);

    const DWORD user = GetCurrentThreadId();
    const double begin = now();
    std::atomic<std::size_t> fed = 0;
    std::thread feeder([&] {
        Pieces pieces(256);
        while (now() - begin < kDuration) {
            if (static_cast<double>(fed) < (now() - begin) * kBytesPerMillisecond) {
                feed(edit.edit.get(), pieces.next());
                fed += 256;
            } else {
                Sleep(2);
            }
        }
        PostThreadMessageW(user, WM_QUIT, 0, 0);
    });
    std::vector<double> asked(2000);
    std::thread asking([&] {
        std::size_t count = 0;
        while (count < asked.size() && now() - begin < kDuration) {
            asked[count] = now();
            PostThreadMessageW(user, kAsked, count++, 0);
            Sleep(10);
        }
    });
    std::vector<double> times;
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0)) {
        if (message.message == kAsked) times.push_back(now() - asked[message.wParam]);
        DispatchMessageW(&message);
    }
    feeder.join();
    asking.join();
    std::sort(times.begin(), times.end());
    if (times.size() < 200) throw std::runtime_error("too few messages were answered");
    return {times[times.size() * 99 / 100], static_cast<double>(fed) / kDuration};
}

// The share of a core, in percent, that the registered terminal takes on a port on which nothing
// arrives.
std::vector<double> idle() {
    constexpr UINT kRound = 5000;
    bench::WireEnd wire({[](double) {}, [](bench::WireEnd&, std::string_view, double) {}});
    const auto stream = bench::connectTo(std::to_wstring(wire.port()));
    const auto link = bench::create<IKelCommunicator>(L"BenchLink.Communicator");
    com::check(link->put_Port(stream.Get()), link);

    AtlAxWinInit();
    const Window frame(L"STATIC", WS_OVERLAPPEDWINDOW, nullptr);
    std::vector<double> shares;
    {
        const Window host(L"AtlAxWin", WS_CHILD, frame.get());
        com::ComPtr<IUnknown> control;
        com::check(AtlAxCreateControlEx(L"KelUtils.KelTerminal", host.get(), nullptr, nullptr,
                                        &control, IID_NULL, nullptr));
        com::ComPtr<IKelTerminal> terminal;
        com::check(control.As(&terminal));
        com::check(terminal->put_Communicator(link.Get()), terminal);
        VARIANT_BOOL isPolling = VARIANT_FALSE;
        com::check(terminal->get_Timer(&isPolling), terminal);
        long window = 0;
        com::check(stream->get_EchoWindow(&window), stream);
        if (!com::isTrue(isPolling) || window == 0)
            throw com::Error(E_FAIL, L"the terminal does not show the port");

        runMessages();
        for (int round = 0; round < 3; ++round) {
            const double begin = now();
            const double used = processorTime();
            const UINT_PTR timer = SetTimer(nullptr, 0, kRound, nullptr);
            MSG message;
            while (now() - begin < kRound && GetMessageW(&message, nullptr, 0, 0))
                DispatchMessageW(&message);
            KillTimer(nullptr, timer);
            shares.push_back(100 * (processorTime() - used) / (now() - begin));
        }
        com::check(terminal->put_Communicator(nullptr), terminal);
    }
    link->put_Port(nullptr);
    stream->Close();
    return shares;
}

}  // namespace

int main() {
    WSADATA sockets;
    if (WSAStartup(MAKEWORD(2, 2), &sockets) != 0) return 2;
    try {
        const com::Apartment apartment;
        print("pieces-64", gain(64));
        print("pieces-256", gain(256));
        print("megabytes", growth());
        std::vector<double> times;
        std::vector<double> rates;
        for (int round = 0; round < 3; ++round) {
            const Answers answers = answer();
            times.push_back(answers.time);
            rates.push_back(answers.rate);
        }
        print("answers", times);
        print("rate", rates);
        print("idle", idle());
        return 0;
    } catch (const std::exception&) {
        std::fprintf(stderr, "kel_pane: %s\n", com::narrow(com::textOfCurrentException()).c_str());
        return 1;
    }
}
