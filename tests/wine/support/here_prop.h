#pragma once
// Windows of the host's thread as that sees them, without a message loop, in scenes.
//
//     here window CAPTION / …      the one that the following lines are about, inside others
//     here show NAME…              tells what they show, or that they are gone; WINDOW is the
//                                  window itself, NAME/edit the field of a box of choices
//     here painted NAME…           tells whether nothing of them waits to be painted
//     here narrow NAME TEXT        adds the text as a program without Unicode does
//     here setfocus NAME
//     here focus NAME              tells whether it has the focus, or a part of it
//     here end NAME                tells whether it is scrolled to the end
//     here send NAME MESSAGE [WIDE [LONG | "TEXT"]]     by the platform's name for the message,
//                                  which messages.txt has to know
//     here ask NAME MESSAGE …      the same, and tells what it gives
//     here post NAME MESSAGE …
//     here colours NAME MESSAGE    tells what the window answers to that message of a control:
//                                  text on background, brush
//     here events LINE             tells the events of a status dialog, and does this in the next
//     one

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/support/cases.h"
#include "tests/support/project_file.h"
#include "tests/wine/support/dialog_driver.h"
#include "tests/wine/support/event_sink.h"
#include "tests/wine/support/stage.h"
#include "tests/wine/support/user.h"

namespace kel::test {

// By the platform's name for it.
inline UINT messageOf(const std::string& name) {
    std::ifstream table(projectFile("tests/wine/support/messages.txt"));
    std::string known;
    for (UINT number; table >> known >> std::hex >> number;)
        if (known == name) return number;
    throw std::invalid_argument("messages.txt has no message " + name);
}

class HereProp final : public Prop {
public:
    explicit HereProp(Stage& stage) : stage_(stage) {}

    void prepare(const std::string& line) override {
        std::string rest = line;
        const std::string word = takeWord(rest);
        const std::string whole = rest;
        if (word == "window") return find(widened(rest));
        if (word == "events") return listen(rest);
        if (word == "show" || word == "painted") return tellEach(rest, word == "show");
        const std::string name = takeWord(rest);
        const HWND control = named(name);
        if (word == "setfocus") {
            SetFocus(control);
        } else if (word == "narrow") {
            const std::string bytes = com::narrow(widened(rest), CP_ACP);
            SendMessageA(control, EM_SETSEL, 5000, 5000);
            SendMessageA(control, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(bytes.c_str()));
        } else if (word == "focus") {
            tell(name, control == GetFocus() || IsChild(control, GetFocus()) ? "has the focus"
                                                                             : "has no focus");
        } else if (word == "end") {
            SCROLLINFO down{sizeof down, SIF_ALL, 0, 0, 0, 0, 0};
            GetScrollInfo(control, SB_VERT, &down);
            tell(name, down.nPos + static_cast<int>(down.nPage) > down.nMax ? "at the end"
                                                                            : "not at the end");
        } else if (word == "colours") {
            tell(name, coloursOf(control, messageOf(rest)));
        } else {
            dispatch(word, control, rest, whole);
        }
    }

private:
    void find(std::wstring path) {
        const std::wstring between = L" / ";
        window_ = nullptr;
        for (bool isTop = true; !path.empty(); isTop = false) {
            const std::wstring caption = path.substr(0, path.find(between));
            path.erase(0, caption.size() + between.size());
            const HWND parent = window_;
            window_ = FindWindowExW(parent, nullptr, nullptr, caption.c_str());
            while (window_ && isTop &&
                   GetWindowThreadProcessId(window_, nullptr) != GetCurrentThreadId())
                window_ = FindWindowExW(parent, window_, nullptr, caption.c_str());
        }
        if (!window_) stage_.transcript.tell("no window");
    }
    void listen(const std::string& line) {
        deed_ = line;
        sink_->onEvent = [this](DISPID event) {
            stage_.transcript.tell("event " + std::to_string(event));
            if (const std::string deed = std::exchange(deed_, {}); !deed.empty()) stage_.play(deed);
            return S_OK;
        };
        DWORD cookie = 0;
        com::check(eventsOf(stage_.component(), DIID__IStatusDialogEvents)
                       ->Advise(sink_->controlling(), &cookie));
    }
    HWND named(const std::string& name) const {
        const std::size_t slash = name.find('/');
        const std::string whole = name.substr(0, slash);
        const HWND control = whole == "WINDOW" ? window_ : controlIn(window_, identifierOf(whole));
        return slash == name.npos ? control : GetWindow(control, GW_CHILD);
    }
    void tell(const std::string& name, const std::string& what) {
        stage_.transcript.tell(name + ": " + what);
    }
    void tellEach(const std::string& line, bool shows) {
        std::istringstream names(line);
        for (std::string name; names >> name;) {
            const HWND control = IsWindow(window_) ? named(name) : nullptr;
            if (!control) {
                tell(name, "gone");
            } else if (shows) {
                tell(name, described(control));
            } else {
                tell(name, GetUpdateRect(control, nullptr, FALSE) ? "not painted" : "painted");
            }
        }
    }
    std::string coloursOf(HWND control, UINT message) const {
        const HDC device = GetDC(control);
        const auto brush = SendMessageW(window_, message, reinterpret_cast<WPARAM>(device),
                                        reinterpret_cast<LPARAM>(control));
        LOGBRUSH description{};
        GetObjectW(reinterpret_cast<HBRUSH>(brush), sizeof description, &description);
        char text[40];
        std::snprintf(text, sizeof text, "%06lX on %06lX, %06lX", GetTextColor(device),
                      GetBkColor(device), description.lbColor);
        ReleaseDC(control, device);
        return text;
    }
    void dispatch(const std::string& way, HWND control, std::string rest,
                  const std::string& whole) {
        const std::string name = takeWord(rest);
        const UINT message = messageOf(name);
        const std::string first = takeWord(rest);
        const auto wide = static_cast<WPARAM>(first.empty() ? 0 : std::stol(first));
        std::wstring text;
        LPARAM longer = 0;
        if (rest.starts_with('"')) {
            text = widened(rest.substr(1, rest.size() - 2));
            longer = reinterpret_cast<LPARAM>(text.c_str());
        } else if (!rest.empty()) {
            longer = std::stol(rest);
        }
        if (way == "post") return void(PostMessageW(control, message, wide, longer));
        if (way != "send" && way != "ask") throw std::invalid_argument("not understood: " + way);
        const LRESULT result = SendMessageW(control, message, wide, longer);
        if (way == "send") return;
        const bool isSelection = message == EM_GETSEL || message == CB_GETEDITSEL;
        tell(whole, isSelection
                        ? std::to_string(LOWORD(result)) + " to " + std::to_string(HIWORD(result))
                        : std::to_string(result));
    }

    Stage& stage_;
    HWND window_ = nullptr;
    const com::ComPtr<EventSink> sink_ = com::makeObject<EventSink>();
    std::string deed_;
};

}  // namespace kel::test
