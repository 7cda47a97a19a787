// The output pane as those use it who feed it, and as the reader does.
#include <set>

#include "resources/resource_ids.h"
#include "tests/wine/terminal/terminal_fixture.h"

namespace kel::test {
namespace {

class OutputPaneTest : public TerminalTest {
protected:
    void SetUp() override { activate(); }

    LRESULT ask(UINT message, WPARAM wide = 0, LPARAM longer = 0) {
        return SendMessageW(output(), message, wide, longer);
    }
    void replace(WPARAM begin, LPARAM end, const wchar_t* text) {
        ask(EM_SETSEL, begin, end);
        ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text));
    }
    // As the streams of links do.
    void feed(const std::wstring& text) {
        const LRESULT end = ask(WM_GETTEXTLENGTH);
        replace(static_cast<WPARAM>(end), end, text.c_str());
    }
    void feedLines(int count, const std::wstring& line = L"line ") {
        for (int i = 0; i < count; ++i)
            feed(line + std::to_wstring(i) + L"\r\n");
    }
    std::wstring shown() { return textOf(output()); }
    int firstLine() { return static_cast<int>(ask(EM_GETFIRSTVISIBLELINE)); }
    std::wstring lineAt(int line) {
        std::wstring text(200, L'\0');
        text[0] = 200;
        text.resize(static_cast<std::size_t>(
            ask(EM_GETLINE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text.data()))));
        return text;
    }
    bool isAtEnd() {
        SCROLLINFO down{sizeof down, SIF_ALL, 0, 0, 0, 0, 0};
        GetScrollInfo(output(), SB_VERT, &down);
        return down.nPos + static_cast<int>(down.nPage) > down.nMax;
    }
    std::pair<DWORD, DWORD> selection() {
        DWORD begin = 0, end = 0;
        ask(EM_GETSEL, reinterpret_cast<WPARAM>(&begin), reinterpret_cast<LPARAM>(&end));
        return {begin, end};
    }
};

TEST_F(OutputPaneTest, TakesPiecesHoweverTheyAreFed) {
    feed(L"one\r");
    feed(L"\ntwo\n");
    replace(static_cast<WPARAM>(-1), -1, L"three");
    replace(1000000, 1000000, L" 3\b4\x07");
    ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"\r\n"));
    SendMessageA(output(), EM_SETSEL, 5000, 5000);
    SendMessageA(output(), EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("\xE4nd"));
    EXPECT_EQ(ask(WM_GETTEXTLENGTH), 24);
    EXPECT_EQ(shown(), L"one\r\ntwo\r\nthree 4^G\r\n\u00E4nd");
    EXPECT_GT(ask(EM_GETLIMITTEXT), 100000000);

    // What is no append is done as it is asked.
    replace(0, 5, L"");
    EXPECT_EQ(shown(), L"two\r\nthree 4^G\r\n\u00E4nd");
    replace(3, 3, L"!");
    EXPECT_EQ(shown().substr(0, 6), L"two!\r\n");
    SetWindowTextW(output(), L"new");
    feed(L"er");
    EXPECT_EQ(shown(), L"newer");
    ask(EM_REPLACESEL, FALSE, 0);
    EXPECT_EQ(terminal->Clear(), S_OK);
    EXPECT_EQ(ask(WM_GETTEXTLENGTH), 0);
    feed(L"again");
    EXPECT_EQ(shown(), L"again");

    // More is taken back than the limit has left.
    EXPECT_EQ(terminal->put_OutputLimit(4), S_OK);
    feed(L"\b\b\b\b\b");
    EXPECT_EQ(ask(WM_GETTEXTLENGTH), 0);
    EXPECT_EQ(shown(), L"");
}

TEST_F(OutputPaneTest, ShowsWhatItHasCollectedByItself) {
    feed(L"soon");
    const HDC device = GetDC(output());
    const auto isPainted = [&] {
        for (int x = 0; x < 40; ++x)
            for (int y = 0; y < 20; ++y)
                if (GetPixel(device, x, y) != 0) return true;
        return false;
    };
    const DWORD limit = GetTickCount() + 5000;
    while (!isPainted() && GetTickCount() < limit) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        runMessages();
    }
    EXPECT_TRUE(isPainted());
    ReleaseDC(output(), device);
}

TEST_F(OutputPaneTest, FollowsTheEndOnlyFromTheEnd) {
    feedLines(100);
    shown();
    EXPECT_TRUE(isAtEnd());
    ask(EM_SETSEL, 40, 45);
    ask(EM_LINESCROLL, 0, 30 - firstLine());
    ASSERT_EQ(firstLine(), 30);
    feedLines(50);
    shown();
    EXPECT_EQ(firstLine(), 30);
    EXPECT_EQ(selection(), (std::pair<DWORD, DWORD>(40, 45)));
    // A feeder that puts back what was selected and scrolls to its piece changes nothing.
    ask(EM_SETSEL, 40, 45);
    EXPECT_EQ(firstLine(), 30);
    ask(EM_LINESCROLL, 0, 1000);
    feedLines(1);
    ask(EM_SCROLLCARET);
    shown();
    EXPECT_TRUE(isAtEnd());
    EXPECT_EQ(selection(), (std::pair<DWORD, DWORD>(40, 45)));
    // Nor is the end lost when the pane gets smaller.
    const RECT place{10, 20, 310, 120};
    as<IOleInPlaceObject>()->SetObjectRects(&place, nullptr);
    EXPECT_TRUE(isAtEnd());
    feedLines(1);
    shown();
    EXPECT_TRUE(isAtEnd());
}

TEST_F(OutputPaneTest, CutsWholeLinesAtTheFront) {
    EXPECT_EQ(terminal->put_OutputLimit(2000), S_OK);
    feedLines(190);
    shown();
    // Somebody reads in the middle, with a selection.
    ask(EM_LINESCROLL, 0, 100 - firstLine());
    const std::wstring top = lineAt(firstLine());
    const auto begin = static_cast<WPARAM>(ask(EM_LINEINDEX, 102));
    ask(EM_SETSEL, begin, static_cast<LPARAM>(begin + 6));
    const std::wstring selected = shown().substr(begin, 6);
    feedLines(60, L"more ");
    EXPECT_LE(shown().size(), 2000u);
    EXPECT_GT(shown().size(), 1400u);
    EXPECT_EQ(shown().substr(0, 5), L"line ");
    EXPECT_EQ(lineAt(firstLine()), top);
    EXPECT_EQ(shown().substr(selection().first, 6), selected);
    feedLines(400, L"last ");
    EXPECT_EQ(shown().substr(0, 5), L"last ");
    EXPECT_EQ(firstLine(), 0);
    // A line that never ends is cut within.
    for (int i = 0; i < 50; ++i)
        feed(std::wstring(100, L'x'));
    EXPECT_LE(shown().size(), 2000u);
    EXPECT_EQ(terminal->put_OutputLimit(100), S_OK);
    EXPECT_LE(shown().size(), 100u);
    EXPECT_EQ(terminal->put_OutputLimit(0), E_INVALIDARG);
}

TEST_F(OutputPaneTest, BeginsLinesWithTheTimeIfAsked) {
    EXPECT_EQ(terminal->put_TimeStamps(VARIANT_TRUE), S_OK);
    feed(L"a");
    feed(L"b\r\nc");
    const std::wstring text = shown();
    ASSERT_EQ(text.size(), 2 * 15 + 5u);
    EXPECT_EQ(text[0], L'[');
    EXPECT_EQ(text.substr(13, 6), L"] ab\r\n");
    EXPECT_EQ(text.substr(text.size() - 3), L"] c");
    EXPECT_EQ(terminal->put_TimeStamps(VARIANT_FALSE), S_OK);
    feed(L"\r\nd");
    EXPECT_EQ(shown().substr(text.size()), L"\r\nd");

    // What somebody else has changed decides whether a line begins.
    EXPECT_EQ(terminal->put_TimeStamps(VARIANT_TRUE), S_OK);
    SetWindowTextW(output(), L"one\r\ntwo");
    feed(L"!\r");
    replace(0, 5, L"");
    feed(L"\n");
    EXPECT_EQ(shown(), L"two!\r\n");
    // Who empties the pane and selects nothing adds to its end.
    SetWindowTextW(output(), L"");
    for (const wchar_t* piece : {L"a\n", L"b"})
        ask(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(piece));
    EXPECT_EQ(shown().size(), 2 * 15 + 4u);
    EXPECT_EQ(shown()[18], L'[');
}

TEST_F(OutputPaneTest, ShowsMuchInParts) {
    const std::wstring line(58, L'x');
    std::wstring text;
    for (int i = 0; i < 1000; ++i)
        text += line + L"\r\n";
    feed(text);
    // The bar tells without making the pane show the rest.
    std::set<int> heights;
    const DWORD limit = GetTickCount() + 10000;
    while ((heights.empty() || *heights.rbegin() < 1000) && GetTickCount() < limit) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        runMessages();
        int least = 0, most = 0;
        GetScrollRange(output(), SB_VERT, &least, &most);
        heights.insert(most);
    }
    EXPECT_GT(heights.size(), 2u);
    EXPECT_EQ(shown(), text);
}

TEST_F(OutputPaneTest, CanBeSelectedWithTheMouseWhileTextArrives) {
    feedLines(30);
    shown();
    const LPARAM from =
        ask(EM_POSFROMCHAR, static_cast<WPARAM>(ask(EM_LINEINDEX, firstLine() + 1)));
    PostMessageW(output(), WM_LBUTTONDOWN, MK_LBUTTON, from);
    runMessages();
    EXPECT_EQ(GetFocus(), GetWindow(commandLine(), GW_CHILD));
    EXPECT_EQ(GetCapture(), output());
    const LPARAM to = MAKELPARAM(LOWORD(from) + 30, HIWORD(from));
    PostMessageW(output(), WM_MOUSEMOVE, MK_LBUTTON, to);
    runMessages();
    feed(L"and more\r\n");
    PostMessageW(output(), WM_LBUTTONUP, 0, to);
    runMessages();
    EXPECT_LT(selection().first, selection().second);
    EXPECT_NE(GetWindowLongW(output(), GWL_STYLE) & ES_NOHIDESEL, 0);
}

struct Bar {
    HWND window;
    explicit Bar(HWND terminal) : window(FindWindowExW(terminal, nullptr, L"#32770", nullptr)) {}
    HWND control(int identifier) const { return GetDlgItem(window, identifier); }
    std::wstring count() const {
        wchar_t text[40] = L"";
        GetWindowTextW(control(IDC_SEARCH_COUNT), text, 40);
        return text;
    }
    void type(const wchar_t* text) const { SetWindowTextW(control(IDC_SEARCH_WANTED), text); }
    void press(int identifier) const { SendMessageW(control(identifier), BM_CLICK, 0, 0); }
};

TEST_F(OutputPaneTest, IsSearched) {
    feed(L"Depth 1\r\ndepth 2\r\ntemperature 3\r\nDepth 4\r\n");
    EXPECT_EQ(terminal->ShowSearch(), S_OK);
    const Bar bar(hwnd());
    ASSERT_TRUE(IsWindowVisible(bar.window));
    EXPECT_EQ(GetFocus(), bar.control(IDC_SEARCH_WANTED));
    RECT place{}, above{};
    GetWindowRect(bar.window, &place);
    GetWindowRect(output(), &above);
    EXPECT_EQ(place.top, above.bottom);

    ask(EM_SETSEL, 0, 0);
    const struct {
        const char* deed;
        const wchar_t* count;
        DWORD begin;
    } steps[] = {
        {"type", L"1 of 3", 0},     {"next", L"2 of 3", 9},      {"next", L"3 of 3", 33},
        {"next", L"1 of 3", 0},     {"previous", L"3 of 3", 33}, {"case", L"2 of 2", 33},
        {"previous", L"1 of 2", 0}, {"enter", L"2 of 2", 33},    {"nothing", L"Not found", 33}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.deed);
        switch (step.deed[0]) {
            case 't':
                bar.type(L"depth ");
                break;
            case 'p':
                bar.press(IDC_SEARCH_PREVIOUS);
                break;
            case 'c':
                bar.type(L"Depth");
                bar.press(IDC_SEARCH_CASE);
                break;
            case 'e':
                SendMessageW(bar.control(IDC_SEARCH_WANTED), WM_KEYDOWN, VK_RETURN, 0);
                break;
            default:
                if (step.deed[1] == 'o') bar.type(L"salinity");
                if (step.deed[1] == 'e') bar.press(IDC_SEARCH_NEXT);
        }
        EXPECT_EQ(bar.count(), step.count);
        EXPECT_EQ(selection().first, step.begin);
    }
    SendMessageW(bar.control(IDC_SEARCH_WANTED), WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_FALSE(IsWindowVisible(bar.window));
    EXPECT_EQ(GetFocus(), GetWindow(commandLine(), GW_CHILD));
    ask(EM_SETSEL, 18, 29);
    EXPECT_EQ(terminal->ShowSearch(), S_OK);
    EXPECT_EQ(textOf(bar.control(IDC_SEARCH_WANTED)), L"temperature");
}

}  // namespace
}  // namespace kel::test
