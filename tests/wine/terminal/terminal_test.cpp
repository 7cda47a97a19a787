// What scenes cannot say of the terminal: what containers ask of its interfaces, where its parts
// are, and what the pane does by and by.
#include <commctrl.h>
#include <gtest/gtest.h>
#include <olectl.h>

#include <chrono>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include "com/message_loop.h"
#include "interfaces/KelUtils.h"
#include "resources/resource_ids.h"
#include "tests/wine/support/library.h"
#include "tests/wine/support/stage.h"
#include "tests/wine/terminal/container.h"

namespace kel::test {
namespace {

class TerminalTest : public testing::Test {
protected:
    void SetUp() override {
        stage.emplace();
        stage->play("make KelTerminal");
        stage->play("container activate");
    }

    template <class Interface = IKelTerminal3>
    com::ComPtr<Interface> as() const {
        com::ComPtr<Interface> found;
        EXPECT_EQ(stage->component()->QueryInterface(IID_PPV_ARGS(&found)), S_OK);
        return found;
    }
    static HWND window() {
        for (HWND top = nullptr; (top = FindWindowExW(nullptr, top, nullptr, L"Container"));)
            if (GetWindowThreadProcessId(top, nullptr) == GetCurrentThreadId())
                return FindWindowExW(top, nullptr, nullptr, L"KelTerminal");
        return nullptr;
    }
    static HWND output() { return controlIn(window(), IDC_TERMINAL_OUTPUT); }
    static HWND commandLine() { return controlIn(window(), IDC_TERMINAL_COMMAND_LINE); }
    static RECT placeOf(HWND child) {
        RECT place{};
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, window(), reinterpret_cast<POINT*>(&place), 2);
        return place;
    }
    static LRESULT ask(UINT message, WPARAM wide = 0, LPARAM longer = 0) {
        return SendMessageW(output(), message, wide, longer);
    }
    // The corner where the text begins.
    static bool isPainted() {
        const HDC device = GetDC(output());
        bool isPainted = false;
        for (int x = 0; x < 40; ++x)
            for (int y = 0; y < 20; ++y)
                isPainted = isPainted || GetPixel(device, x, y) != 0;
        ReleaseDC(output(), device);
        return isPainted;
    }
    static void runMessagesUntil(const std::function<bool()>& holds) {
        const DWORD begin = GetTickCount();
        while (!holds() && GetTickCount() - begin < 10000) {
            com::sleepUntilMessage(std::chrono::milliseconds(10));
            com::runWaitingMessages();
        }
        EXPECT_TRUE(holds());
    }

    static constexpr DWORD kDrawing = 150;
    // Notes as well that the pane begins to show something.
    static LRESULT CALLBACK drawSlowly(HWND pane, UINT message, WPARAM wide, LPARAM longer,
                                       UINT_PTR, DWORD_PTR isShowing) {
        if (message == WM_ERASEBKGND) Sleep(kDrawing);
        if (message == WM_TIMER) *reinterpret_cast<bool*>(isShowing) = true;
        return DefSubclassProc(pane, message, wide, longer);
    }

    std::optional<Stage> stage;
};

TEST_F(TerminalTest, TellsWhatItIs) {
    DWORD status = 0;
    EXPECT_EQ(as<IOleObject>()->GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
    EXPECT_EQ(status, 131473u);
    CLSID identifier{};
    EXPECT_EQ(as<IOleObject>()->GetUserClassID(&identifier), S_OK);
    EXPECT_EQ(identifier, CLSID_KelTerminal);
    LPOLESTR type = nullptr;
    EXPECT_EQ(as<IOleObject>()->GetUserType(USERCLASSTYPE_FULL, &type), S_OK);
    EXPECT_STREQ(type, L"KelTerminal Class");
    CoTaskMemFree(type);

    SIZEL extent{}, natural{};
    DVEXTENTINFO content{sizeof content, DVEXTENT_CONTENT, {}};
    EXPECT_EQ(as<IOleObject>()->GetExtent(DVASPECT_CONTENT, &extent), S_OK);
    EXPECT_EQ(as<IViewObjectEx>()->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr,
                                                    &content, &natural),
              S_OK);
    EXPECT_EQ(extent.cx, natural.cx);
    EXPECT_GT(extent.cx, 5000);
    EXPECT_GT(extent.cy, 3000);
    EXPECT_EQ(as<IOleObject>()->GetExtent(DVASPECT_ICON, &extent), DV_E_DVASPECT);
    SIZEL wanted{2000, 1000};
    EXPECT_EQ(as<IOleObject>()->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
    EXPECT_EQ(as<IViewObjectEx>()->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent), S_OK);
    EXPECT_EQ(extent.cy, 1000);

    CAUUID pages{};
    EXPECT_EQ(as<ISpecifyPropertyPages>()->GetPages(&pages), S_OK);
    CoTaskMemFree(pages.pElems);
    CONTROLINFO keys{sizeof keys, nullptr, 0, 0};
    EXPECT_EQ(as<IOleControl>()->GetControlInfo(&keys), S_OK);
    EXPECT_EQ(keys.dwFlags, CTRLINFO_EATS_RETURN + 0u);
}

// Each call on the container fails, deactivates the control, or drops the last reference. Whoever
// was told of an activation hears of its end.
TEST_F(TerminalTest, SurvivesWhatItsContainerDoesInACall) {
    stage.reset();
    for (const std::string call :
         {"CanInPlaceActivate", "OnInPlaceActivateEx", "GetWindow", "GetWindowContext",
          "OnUIActivate", "OnFocus", "SetActiveObject", "ShowObject", "SetActiveObject none",
          "OnUIDeactivate", "OnInPlaceDeactivate"}) {
        for (const char* deed : {"fail", "container deactivate", "release"}) {
            SCOPED_TRACE(call + ": " + deed);
            Stage own;
            own.play("make KelTerminal");
            own.play("container tell");
            own.play("container during " + call + " | " + deed);
            own.play("container activate ui");
            own.play("container end");
            if (own.component()) own.play("container deactivate");
            own.play("release");
            EXPECT_EQ(window(), nullptr);
            std::istringstream told(own.transcript.step(0));
            int open = 0;
            for (std::string line; std::getline(told, line);)
                open += line == "OnInPlaceActivateEx" ? 1 : line == "OnInPlaceDeactivate" ? -1 : 0;
            const bool isRefused = call == "OnInPlaceActivateEx" && deed == std::string("fail");
            EXPECT_EQ(open, isRefused ? 1 : 0);
        }
    }
}

// A sink that holds the control, and its last reference in the end.
class HoldingSink final : public com::Object<HoldingSink, com::Plain<IAdviseSink>> {
public:
    static constexpr com::ClassDescription kClass{};
    HoldingSink(com::ComPtr<IUnknown> held, bool& keptAlive) : held_(held), keptAlive_(keptAlive) {}
    ~HoldingSink() override {
        held_.Reset();
        keptAlive_ = kelUtils().canUnloadNow() == S_FALSE;
    }

    STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {}
    STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override {}
    STDMETHODIMP_(void) OnRename(IMoniker*) override {}
    STDMETHODIMP_(void) OnSave() override {}
    STDMETHODIMP_(void) OnClose() override {}

private:
    com::ComPtr<IUnknown> held_;
    bool& keptAlive_;
};

TEST_F(TerminalTest, LivesAsLongAsItsCalls) {
    stage.reset();
    bool keptAlive = false;
    com::ComPtr<IViewObjectEx> made;
    ASSERT_EQ(kelUtils().create<IKelTerminal3>(CLSID_KelTerminal).As(&made), S_OK);
    IViewObjectEx* const view = made.Detach();
    view->SetAdvise(DVASPECT_CONTENT, 0, com::makeObject<HoldingSink>(view, keptAlive).Get());
    view->Release();
    EXPECT_EQ(view->SetAdvise(0, 0, nullptr), S_OK);
    EXPECT_TRUE(keptAlive);
}

TEST_F(TerminalTest, TakesCallsInAnyOrder) {
    const char* const deeds[] = {"container leave",
                                 "container close",
                                 "container deactivate",
                                 "container uideactivate",
                                 "container place 10 20 310 220",
                                 "container link own",
                                 "container link none",
                                 "Send",
                                 "Clear",
                                 "ShowSearch",
                                 "ShowCommandLine = false",
                                 "ShowCommandLine = true",
                                 "container font Italic = true",
                                 "container save stream",
                                 "container load stream",
                                 "container activate",
                                 "container activate ui",
                                 "container activate hide",
                                 "container activate primary",
                                 "Timer = true"};
    std::mt19937 random(1);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        stage->play("make KelTerminal alone");
        stage->play("container save stream");
        for (int step = 0; step < 12; ++step) {
            stage->play(deeds[random() % std::size(deeds)]);
            if (step % 4 == 3) com::runWaitingMessages();
        }
        stage->play("container end");
    }
    stage->play("release");
    EXPECT_EQ(window(), nullptr);
    EXPECT_EQ(stage->link.shownIn(), 0);
}

TEST_F(TerminalTest, IsClippedToWhatTheContainerShows) {
    stage->play("container place 50 50 250 150 100 0 600 100");
    RECT visible{};
    GetWindowRgnBox(window(), &visible);
    const RECT expected{50, 0, 200, 50};
    EXPECT_TRUE(EqualRect(&visible, &expected));
    stage->play("container place 50 50 250 150 50 50 250 150");
    EXPECT_EQ(GetWindowRgnBox(window(), &visible), ERROR);
}

TEST_F(TerminalTest, ArrangesItsPartsAtAnySize) {
    const RECT first = placeOf(window());
    EXPECT_EQ(first.right, 300);
    EXPECT_EQ(first.bottom, 200);
    for (const SIZE size : {SIZE{40, 30}, SIZE{0, 0}, SIZE{1600, 1200}}) {
        SCOPED_TRACE(size.cx);
        stage->play("container place 0 0 " + std::to_string(size.cx) + " " +
                    std::to_string(size.cy));
        EXPECT_EQ(placeOf(output()).right, size.cx);
        EXPECT_EQ(placeOf(commandLine()).right, size.cx);
        EXPECT_EQ(placeOf(output()).bottom, placeOf(commandLine()).top);
    }
    EXPECT_EQ(placeOf(commandLine()).bottom, 1200);
    stage->play("ShowSearch");
    const RECT bar = placeOf(FindWindowExW(window(), nullptr, L"#32770", nullptr));
    EXPECT_EQ(bar.top, placeOf(output()).bottom);
    EXPECT_GT(bar.bottom, bar.top);
    EXPECT_EQ(bar.bottom, placeOf(commandLine()).top);
    stage->play("ShowCommandLine = false");
    EXPECT_EQ(placeOf(FindWindowExW(window(), nullptr, L"#32770", nullptr)).bottom, 1200);
}

TEST_F(TerminalTest, ChangesOfTheFontReachItsParts) {
    const auto height = [](HWND control) {
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof font,
                   &font);
        return font.lfHeight;
    };
    com::ComPtr<IFontDisp> font;
    as()->get_Font(&font);
    com::ComPtr<IFont> details;
    font.As(&details);
    CY size{};
    size.int64 = 240000;
    details->put_Size(size);
    EXPECT_LT(height(output()), -25);
    EXPECT_EQ(height(commandLine()), height(output()));
    // A copy is not watched, one by reference is.
    size.int64 = 120000;
    EXPECT_EQ(as()->put_Font(font.Get()), S_OK);
    details->put_Size(size);
    EXPECT_LT(height(output()), -25);
    EXPECT_EQ(as()->putref_Font(font.Get()), S_OK);
    EXPECT_GT(height(output()), -25);
    stage->play("container drop");
    EXPECT_EQ(details->put_Size(size), S_OK);
}

TEST_F(TerminalTest, ShowsWhatItHasCollectedByItself) {
    runMessagesUntil([] { return !isPainted(); });
    stage->play("container feed soon");
    runMessagesUntil(isPainted);
}

// The bar tells without making the pane show the rest.
TEST_F(TerminalTest, ShowsMuchInParts) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += i < 960 ? std::string(58, 'x') + "\r\n" : "\r\n";
    stage->play("container feed " + text);
    runMessagesUntil(isPainted);
    std::set<int> heights;
    runMessagesUntil([&] {
        int least = 0, most = 0;
        GetScrollRange(output(), SB_VERT, &least, &most);
        heights.insert(most);
        return most >= 1000;
    });
    EXPECT_GT(heights.size(), 2u);
    EXPECT_EQ(ask(WM_GETTEXTLENGTH), 57680);
    runMessagesUntil([] { return !isPainted(); });
}

// However slowly the system draws, others of the thread have twice as long.
TEST_F(TerminalTest, RestsLongerThanItDraws) {
    runMessagesUntil([] { return !isPainted(); });
    bool isShowing = false;
    SetWindowSubclass(output(), drawSlowly, 1, reinterpret_cast<DWORD_PTR>(&isShowing));
    stage->play("container feed first");
    runMessagesUntil(isPainted);
    isShowing = false;
    const DWORD begin = GetTickCount();
    stage->play("container feed second");
    runMessagesUntil([&] { return isShowing; });
    EXPECT_GE(GetTickCount() - begin, 2 * kDrawing - 20);
    RemoveWindowSubclass(output(), drawSlowly, 1);
}

TEST_F(TerminalTest, LeavesItsPaneHidden) {
    ShowWindow(output(), SW_HIDE);
    stage->play("container feed unseen");
    EXPECT_EQ(ask(EM_GETLINECOUNT), 1);
    EXPECT_EQ(GetWindowLongW(output(), GWL_STYLE) & WS_VISIBLE, 0);
}

TEST_F(TerminalTest, CanBeSelectedWithTheMouseWhileTextArrives) {
    stage->play("container activate ui");
    stage->play("container feeds 0 29 line");
    const auto start = ask(EM_LINEINDEX, static_cast<WPARAM>(ask(EM_GETFIRSTVISIBLELINE)) + 1);
    const LPARAM from = ask(EM_POSFROMCHAR, static_cast<WPARAM>(start));
    PostMessageW(output(), WM_LBUTTONDOWN, MK_LBUTTON, from);
    com::runWaitingMessages();
    EXPECT_EQ(GetFocus(), GetWindow(commandLine(), GW_CHILD));
    EXPECT_EQ(GetCapture(), output());
    const LPARAM to = MAKELPARAM(LOWORD(from) + 30, HIWORD(from));
    PostMessageW(output(), WM_MOUSEMOVE, MK_LBUTTON, to);
    com::runWaitingMessages();
    stage->play("container feed and more");
    PostMessageW(output(), WM_LBUTTONUP, 0, to);
    com::runWaitingMessages();
    const auto selection = static_cast<DWORD>(ask(EM_GETSEL));
    EXPECT_LT(LOWORD(selection), HIWORD(selection));
    EXPECT_NE(GetWindowLongW(output(), GWL_STYLE) & ES_NOHIDESEL, 0);
}

// The first one goes on reading, lets no other read inside, and takes nothing back that is not its
// own.
TEST_F(TerminalTest, TwoShareAStream) {
    Container second;
    const auto other = kelUtils().create<IKelTerminal3>(CLSID_KelTerminal);
    com::ComPtr<IOleObject> control;
    ASSERT_EQ(other.As(&control), S_OK);
    control->SetClientSite(second.site());
    control->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, second.site(), 0, second.window(), nullptr);
    other->put_Communicator(stage->link.communicator());
    long pane = 0;
    other->get_OutputWindow(&pane);
    EXPECT_EQ(stage->link.shownIn(), pane);
    stage->play("container received waiting");
    stage->transcript.forget();
    const auto tell = stage->link.onCall;
    stage->link.onCall = [&](const std::string& call) {
        tell(call);
        SendMessageW(GetParent(static_cast<HWND>(LongToHandle(pane))), WM_TIMER, 1, 0);
    };
    stage->play("container tick");
    stage->link.onCall = tell;
    EXPECT_EQ(stage->transcript.step(0), "EchoWindow\nClearReadBuffer\n");
    stage->play("container drop");
    EXPECT_EQ(stage->link.shownIn(), pane);
    control->Close(OLECLOSE_NOSAVE);
    control->SetClientSite(nullptr);
    EXPECT_EQ(stage->link.shownIn(), 0);
}

}  // namespace
}  // namespace kel::test
