// What the terminal does: its look, its keys, its dealings with the link.
#include <algorithm>

#include "resources/resource_ids.h"
#include "tests/support/cases.h"
#include "tests/wine/terminal/terminal_fixture.h"

namespace kel::test {
namespace {

TEST_F(TerminalTest, LooksAsItWasSet) {
    activate();
    EXPECT_EQ(textOf(hwnd()), L"KelTerminal");
    EXPECT_EQ(textOf(output()), L"");
    const auto colours = [&](UINT message, HWND child) {
        const HDC device = GetDC(child);
        const auto brush = reinterpret_cast<HBRUSH>(SendMessageW(
            hwnd(), message, reinterpret_cast<WPARAM>(device), reinterpret_cast<LPARAM>(child)));
        LOGBRUSH description{};
        GetObjectW(brush, sizeof description, &description);
        char text[40];
        std::snprintf(text, sizeof text, "%06lX on %06lX, %06lX", GetTextColor(device),
                      GetBkColor(device), description.lbColor);
        ReleaseDC(child, device);
        return std::string(text);
    };
    EXPECT_EQ(colours(WM_CTLCOLORSTATIC, output()), "FFFFFF on 000000, 000000");
    terminal->put_ForeColor(0x0000FF);
    terminal->put_BackColor(0x102030);
    terminal->put_CommandLineTextColor(0x00FF00);
    terminal->put_CommandLineBackColor(0x405060);
    EXPECT_EQ(colours(WM_CTLCOLORSTATIC, output()), "0000FF on 102030, 102030");
    EXPECT_EQ(colours(WM_CTLCOLOREDIT, output()), "0000FF on 102030, 102030");
    for (const UINT message : {WM_CTLCOLOREDIT, WM_CTLCOLORLISTBOX, WM_CTLCOLORSTATIC,
                               WM_CTLCOLORBTN, WM_CTLCOLORSCROLLBAR, WM_CTLCOLORMSGBOX}) {
        EXPECT_EQ(colours(message, commandLine()), "00FF00 on 405060, 405060") << message;
    }
    container.ambients.emplace(DISPID_AMBIENT_BACKCOLOR, com::Variant(0x112233L));
    as<IOleControl>()->OnAmbientPropertyChange(DISPID_AMBIENT_BACKCOLOR);
    EXPECT_EQ(colours(WM_CTLCOLORDLG, hwnd()).substr(10), "112233, 112233");
    EXPECT_EQ(SendMessageW(hwnd(), WM_ERASEBKGND, 0, 0), TRUE);
}

TEST_F(TerminalTest, ArrangesItsPartsAtAnySize) {
    activate();
    const auto placeIn = [&](HWND child) {
        RECT place{};
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, hwnd(), reinterpret_cast<POINT*>(&place), 2);
        return place;
    };
    for (const SIZE size : {SIZE{300, 200}, SIZE{40, 30}, SIZE{0, 0}, SIZE{1600, 1200}}) {
        SCOPED_TRACE(size.cx);
        const RECT place{0, 0, size.cx, size.cy};
        as<IOleInPlaceObject>()->SetObjectRects(&place, nullptr);
        EXPECT_EQ(placeIn(output()).right, size.cx);
        EXPECT_EQ(placeIn(commandLine()).right, size.cx);
        EXPECT_EQ(placeIn(output()).bottom, placeIn(commandLine()).top);
        if (size.cy > 100) {
            EXPECT_EQ(placeIn(commandLine()).bottom, size.cy);
        }
    }
    terminal->put_ShowCommandLine(VARIANT_FALSE);
    EXPECT_FALSE(IsWindowVisible(commandLine()));
    EXPECT_EQ(placeIn(output()).bottom, 1200);
    close();
    terminal = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
    terminal->put_ShowCommandLine(VARIANT_FALSE);
    activate();
    EXPECT_FALSE(IsWindowVisible(commandLine()));
}

TEST_F(TerminalTest, ChangesOfTheFontReachItsParts) {
    const auto height = [](HWND window) {
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font,
                   &font);
        return font.lfHeight;
    };
    activate();
    com::ComPtr<IFontDisp> font;
    terminal->get_Font(&font);
    com::ComPtr<IFont> details;
    font.As(&details);
    CY size{};
    size.int64 = 240000;
    details->put_Size(size);
    EXPECT_LT(height(output()), -25);
    EXPECT_EQ(height(commandLine()), height(output()));
    // A copy is not watched, one by reference is.
    size.int64 = 120000;
    EXPECT_EQ(terminal->put_Font(font.Get()), S_OK);
    details->put_Size(size);
    EXPECT_LT(height(output()), -25);
    EXPECT_EQ(terminal->putref_Font(font.Get()), S_OK);
    EXPECT_GT(height(output()), -25);
    close();
    EXPECT_EQ(details->put_Size(size), S_OK);
}

// How the keys come: straight from the queue, through a dialog's loop, through the frame of a
// container that looks for accelerators first.
enum class Loop { Plain, Dialog, Accelerating };

class KeyTest : public TerminalTest {
protected:
    void SetUp() override {
        terminal->put_Communicator(link.communicator());
        terminal->put_Timer(VARIANT_FALSE);
        activate(OLEIVERB_UIACTIVATE);
        link.calls.clear();
    }

    HWND edit() const { return GetWindow(commandLine(), GW_CHILD); }

    void press(Loop loop, UINT message, WPARAM key) {
        const HWND focus = GetFocus();
        PostMessageW(focus, message, key, 0);
        if (message == WM_KEYDOWN && key == VK_RETURN) PostMessageW(focus, WM_CHAR, L'\r', 0);
        MSG now;
        while (PeekMessageW(&now, nullptr, 0, 0, PM_REMOVE)) {
            const bool isKey = now.message >= WM_KEYFIRST && now.message <= WM_KEYLAST;
            if (loop == Loop::Dialog && IsDialogMessageW(container.window(), &now)) continue;
            if (loop == Loop::Accelerating && isKey && container.activeObject() &&
                container.activeObject()->TranslateAccelerator(&now) == S_OK) {
                continue;
            }
            DispatchMessageW(&now);
        }
    }
    void send(const wchar_t* text) {
        SetWindowTextW(commandLine(), text);
        EXPECT_EQ(terminal->Send(), S_OK);
    }
};

TEST_F(KeyTest, WorkInEveryLoop) {
    send(L"start");
    send(L"getall");
    send(L"stop");
    for (const Loop loop : {Loop::Plain, Loop::Dialog, Loop::Accelerating}) {
        SCOPED_TRACE(static_cast<int>(loop));
        ASSERT_EQ(GetFocus(), edit());
        const struct {
            const wchar_t* typed;
            WPARAM key;
            const wchar_t* shown;
        } steps[] = {{L"", VK_DOWN, L"stop"},        {L"", VK_UP, L"stop"},
                     {L"stop", VK_UP, L"getall"},    {L"getall", VK_UP, L"start"},
                     {L"start", VK_UP, L"stop"},     {L"stop", VK_DOWN, L"start"},
                     {L"start", VK_DOWN, L"getall"}, {L"s", VK_UP, L"stop"},
                     {L"ST", VK_DOWN, L"stop"},      {L"sta", VK_DOWN, L"start"},
                     {L"other", VK_UP, L"stop"}};
        for (const auto& step : steps) {
            SetWindowTextW(commandLine(), step.typed);
            press(loop, WM_KEYDOWN, step.key);
            EXPECT_EQ(textOf(commandLine()), step.shown) << com::narrow(step.typed);
            EXPECT_EQ(SendMessageW(commandLine(), CB_GETEDITSEL, 0, 0),
                      MAKELONG(wcslen(step.shown), wcslen(step.shown)));
        }
        for (const UINT message : {WM_KEYDOWN, WM_SYSKEYDOWN}) {
            link.calls.clear();
            SetWindowTextW(commandLine(), L"start");
            press(loop, message, VK_RETURN);
            EXPECT_EQ(link.takeWork(), "Link.SendCommand \"start\" 0\n");
            EXPECT_EQ(textOf(commandLine()), L"");
        }
        // Back into the order of the table above.
        send(L"getall");
        send(L"stop");
        EXPECT_EQ(SendMessageW(commandLine(), CB_GETCOUNT, 0, 0), 3);
    }
}

TEST_F(KeyTest, DoNothingWhileTheCommandLineIsHidden) {
    send(L"start");
    SetWindowTextW(commandLine(), L"typed");
    terminal->put_ShowCommandLine(VARIANT_FALSE);
    EXPECT_EQ(GetFocus(), hwnd());
    link.calls.clear();
    for (const HWND window : {hwnd(), edit()})
        for (const WPARAM key : {VK_RETURN, VK_UP, VK_DOWN})
            SendMessageW(window, WM_KEYDOWN, key, 0);
    EXPECT_EQ(textOf(commandLine()), L"typed");
    EXPECT_EQ(link.takeWork(), "");
    SetFocus(output());
    EXPECT_EQ(GetFocus(), hwnd());
}

TEST_F(KeyTest, TabAndUnknownKeysAreTheContainers) {
    container.takeCalls();
    press(Loop::Accelerating, WM_KEYDOWN, VK_TAB);
    press(Loop::Accelerating, WM_KEYDOWN, VK_F7);
    EXPECT_EQ(container.takeCalls(), "TranslateAccelerator, TranslateAccelerator");
    container.ambients.emplace(DISPID_AMBIENT_UIDEAD, com::Variant(true));
    press(Loop::Accelerating, WM_KEYDOWN, VK_RETURN);
    EXPECT_EQ(link.takeWork(), "");
}

TEST_F(KeyTest, FocusNeverStaysOnTheOutput) {
    container.takeCalls();
    SetFocus(output());
    EXPECT_EQ(GetFocus(), edit());
    SetFocus(container.window());
    EXPECT_EQ(container.takeCalls(), "OnFocus lost");
    SetFocus(hwnd());
    EXPECT_EQ(GetFocus(), edit());
    EXPECT_EQ(container.takeCalls(), "OnFocus");
}

TEST_F(KeyTest, WhatCannotBeSentStays) {
    SetWindowTextW(commandLine(), L"start");
    link.answers["Link.SendCommand"] = {false};
    EXPECT_EQ(terminal->Send(), E_FAIL);
    EXPECT_EQ(takeError()->description, L"The command could not be sent to the instrument");
    EXPECT_EQ(textOf(commandLine()), L"start");
    // By the key the reason is shown.
    link.failMethod(L"SendCommand");
    press(Loop::Plain, WM_KEYDOWN, VK_RETURN);
    EXPECT_NE(textOf(output()).find(L"SendCommand(\"start\", false, 0)\r\n"), std::wstring::npos);
    EXPECT_EQ(textOf(commandLine()), L"start");
    EXPECT_EQ(SendMessageW(commandLine(), CB_GETCOUNT, 0, 0), 0);
    // What is typed meanwhile stays too; a second one waits its turn.
    HRESULT nested = S_OK;
    link.onCall = [&](const std::string&) {
        nested = terminal->Send();
        SetWindowTextW(commandLine(), L"next");
    };
    EXPECT_EQ(terminal->Send(), S_OK);
    EXPECT_EQ(nested, HRESULT_FROM_WIN32(ERROR_BUSY));
    EXPECT_EQ(textOf(commandLine()), L"next");
    link.onCall = nullptr;
    terminal->put_Communicator(nullptr);
    EXPECT_EQ(terminal->Send(), E_UNEXPECTED);
}

TEST_F(KeyTest, AControlMayGoWhileItSends) {
    for (const bool isLast : {false, true}) {
        SetWindowTextW(commandLine(), L"start");
        link.onCall = [&](const std::string& call) {
            if (call.find("SendCommand") == std::string::npos) return;
            if (!isLast) as<IOleInPlaceObject>()->InPlaceDeactivate();
            if (isLast) close();
        };
        press(Loop::Plain, WM_KEYDOWN, VK_RETURN);
        link.onCall = nullptr;
        if (!isLast) activate(OLEIVERB_UIACTIVATE);
    }
    EXPECT_EQ(GetWindow(container.window(), GW_CHILD), nullptr);
}

class PollTest : public TerminalTest {
protected:
    void SetUp() override {
        link.received = "";
        terminal->put_Communicator(link.communicator());
        activate();
        link.calls.clear();
    }
    long pane() const { return HandleToLong(output()); }
    std::string workOfTick() {
        tick();
        std::string work;
        for (const std::string& call : std::exchange(link.calls, {}))
            work += (work.empty() ? "" : ", ") + call;
        return work;
    }
};

TEST_F(PollTest, ClaimsTheStreamAndGivesItBack) {
    EXPECT_EQ(link.shownIn(), pane());
    FakeLink other;
    EXPECT_EQ(terminal->put_Communicator(other.communicator()), S_OK);
    EXPECT_EQ(link.shownIn(), 0);
    EXPECT_EQ(other.shownIn(), pane());
    // Somebody else has it now: it is not taken from him.
    other.echoWindow = 77;
    EXPECT_EQ(terminal->put_Communicator(nullptr), S_OK);
    EXPECT_EQ(other.echoWindow, 77);
    // A service works on the stream: the same communicator again changes nothing.
    terminal->put_Communicator(link.communicator());
    link.echoWindow = 0;
    terminal->put_Communicator(link.communicator());
    tick();
    EXPECT_EQ(link.shownIn(), 0);
    // A window that opens later claims, too; one that goes gives back.
    as<IOleInPlaceObject>()->InPlaceDeactivate();
    verb(OLEIVERB_INPLACEACTIVATE);
    EXPECT_EQ(link.shownIn(), pane());
    as<IOleInPlaceObject>()->InPlaceDeactivate();
    EXPECT_EQ(link.shownIn(), 0);
}

TEST_F(PollTest, EmptiesTheStreamInOrder) {
    EXPECT_EQ(workOfTick(), "EchoWindow");
    link.received = "waiting";
    link.tellsFetches = true;
    EXPECT_EQ(workOfTick(),
              "Link.Port, EchoWindow, BytesInReadBuffer, Link.Preprocessor, ClearReadBuffer");
    link.tellsFetches = false;
    EXPECT_EQ(link.received, "");
    link.received = "waiting";
    link.echoWindow = 0;
    EXPECT_EQ(workOfTick(), "EchoWindow");
    link.echoWindow = 77;
    terminal->put_Timer(VARIANT_FALSE);
    EXPECT_EQ(workOfTick(), "");
    terminal->put_Timer(VARIANT_TRUE);
    link.hasPort = false;
    EXPECT_EQ(workOfTick(), "EchoWindow");
    EXPECT_EQ(workOfTick(), "");
    link.hasPort = true;
    EXPECT_EQ(workOfTick(),
              "EchoWindow = " + std::to_string(pane()) + ", EchoWindow, ClearReadBuffer");
    // A form in design shows no instrument.
    link.received = "waiting";
    container.ambients.emplace(DISPID_AMBIENT_USERMODE, com::Variant(false));
    as<IOleControl>()->OnAmbientPropertyChange(DISPID_AMBIENT_USERMODE);
    link.calls.clear();
    EXPECT_EQ(workOfTick(), "");
    EXPECT_EQ(link.shownIn(), 0);
}

TEST_F(PollTest, LeavesTheStreamToAScript) {
    const auto preprocessor = kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
    preprocessor->put_Communicator(link.communicator());
    link.preprocessor = preprocessor.Get();
    link.received = "OK";
    std::string inside;
    link.onCall = [&](const std::string& call) {
        if (!inside.empty() || call.find("WriteString") == std::string::npos) return;
        link.received = "answer";
        link.calls.clear();
        inside = workOfTick();
    };
    VARIANT_BOOL ran = VARIANT_FALSE;
    EXPECT_EQ(preprocessor->PreprocessAndRun(com::Bstr(L"start").get(), &ran), S_OK);
    EXPECT_EQ(inside, "EchoWindow");
    link.calls.clear();
    link.received = "later";
    EXPECT_EQ(workOfTick(), "EchoWindow, ClearReadBuffer");
    preprocessor->put_Communicator(nullptr);
    link.preprocessor = nullptr;
}

TEST_F(PollTest, TellsOnceOfAStreamThatFails) {
    link.received = "waiting";
    for (const wchar_t* failing : {L"get_EchoWindow", L"ClearReadBuffer"}) {
        SCOPED_TRACE(com::narrow(std::wstring_view(failing)));
        terminal->Clear();
        link.failMethod(failing);
        tick();
        tick();
        const std::wstring text = textOf(output());
        EXPECT_EQ(text.find(L"Call "), 0u);
        EXPECT_EQ(text.find(std::wstring(failing) + L"()\r\n") + 4 + wcslen(failing), text.size());
        link.calls.clear();
        EXPECT_EQ(workOfTick(), "");
        // Another port is another matter.
        link.hasPort = false;
        tick();
        link.hasPort = true;
        link.calls.clear();
        EXPECT_NE(workOfTick(), "");
        link.received = "waiting";
    }
}

TEST_F(PollTest, IsNotReentered) {
    link.received = "waiting";
    FakeLink otherLink;
    Container otherContainer;
    int depth = 0;
    int deepest = 0;
    link.onCall = [&](const std::string&) {
        deepest = std::max(deepest, ++depth);
        tick();
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        --depth;
    };
    tick();
    EXPECT_EQ(deepest, 1);
    link.onCall = nullptr;
    link.received = "waiting";
    link.calls.clear();
    EXPECT_EQ(workOfTick(), "EchoWindow, ClearReadBuffer");
}

TEST_F(PollTest, AControlMayGoInItsOwnTick) {
    for (const char* where : {"EchoWindow", "ClearReadBuffer"}) {
        for (const bool isLast : {false, true}) {
            SCOPED_TRACE(where);
            if (!terminal) terminal = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
            terminal->put_Communicator(link.communicator());
            activate();
            link.received = "waiting";
            const HWND window = hwnd();
            bool isGone = false;
            link.onCall = [&](const std::string& call) {
                if (call != where || std::exchange(isGone, true)) return;
                if (!isLast) as<IOleInPlaceObject>()->InPlaceDeactivate();
                if (isLast) close();
            };
            tick();
            EXPECT_FALSE(IsWindow(window));
            link.onCall = nullptr;
        }
    }
}

TEST_F(PollTest, AWindowThatGoesWhileItClaimsIsForgotten) {
    as<IOleInPlaceObject>()->InPlaceDeactivate();
    link.onCall = [&](const std::string& call) {
        if (call.starts_with("EchoWindow = ")) as<IOleInPlaceObject>()->InPlaceDeactivate();
    };
    verb(OLEIVERB_INPLACEACTIVATE);
    link.onCall = nullptr;
    EXPECT_EQ(link.shownIn(), 0);
}

TEST_F(PollTest, TwoTerminalsShareAStream) {
    Container second;
    auto other = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
    const auto control = to<IOleObject>(other.Get());
    control->SetClientSite(second.site());
    control->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, second.site(), 0, second.window(), nullptr);
    other->put_Communicator(link.communicator());
    long pane = 0;
    other->get_OutputWindow(&pane);
    EXPECT_EQ(link.shownIn(), pane);
    // The first one goes on reading, and takes nothing back that is not its own.
    link.received = "waiting";
    link.calls.clear();
    EXPECT_EQ(workOfTick(), "EchoWindow, ClearReadBuffer");
    close();
    EXPECT_EQ(link.shownIn(), pane);
    control->Close(OLECLOSE_NOSAVE);
    control->SetClientSite(nullptr);
    EXPECT_EQ(link.shownIn(), 0);
}

}  // namespace
}  // namespace kel::test
