#include <gtest/gtest.h>

#include "terminal/model/command_history.h"
#include "terminal/model/pane_text.h"
#include "terminal/model/terminal_layout.h"
#include "terminal/model/text_search.h"

namespace kel::terminal {
namespace {

TEST(CommandHistoryTest, StepsGoFromTheNewestAndAroundTheEnds) {
    CommandHistory history;
    EXPECT_EQ(history.older(L""), nullptr);
    EXPECT_EQ(history.newer(L"x"), nullptr);
    for (const wchar_t* command : {L"time", L"sernum", L"", L"settings", L"Sample", L"sample"})
        history.add(command);
    EXPECT_EQ(history.entries(),
              (std::vector<std::wstring>{L"sample", L"Sample", L"settings", L"sernum", L"time"}));

    EXPECT_EQ(*history.older(L""), L"sample");
    EXPECT_EQ(*history.newer(L""), L"sample");
    EXPECT_EQ(*history.older(L"Sample"), L"settings");
    EXPECT_EQ(*history.newer(L"Sample"), L"sample");
    EXPECT_EQ(*history.newer(L"sample"), L"time");
    EXPECT_EQ(*history.older(L"time"), L"sample");

    EXPECT_EQ(*history.older(L"SE"), L"settings");
    EXPECT_EQ(*history.newer(L"ser"), L"sernum");
    EXPECT_EQ(*history.older(L"unheard"), L"sample");

    history.add(L"time");
    EXPECT_EQ(history.entries().front(), L"time");
    EXPECT_EQ(history.entries().size(), 5u);
}

TEST(CommandHistoryTest, KeepsTheLastHundred) {
    CommandHistory history;
    for (int i = 0; i < 150; ++i)
        history.add(std::to_wstring(i));
    EXPECT_EQ(history.entries().size(), 100u);
    EXPECT_EQ(history.entries().front(), L"149");
    EXPECT_EQ(history.entries().back(), L"50");
}

struct PaneCase {
    const wchar_t* received;
    const wchar_t* shown;
};

constexpr PaneCase kPaneCases[] = {
    {L"one\r\ntwo", L"one\r\ntwo"},
    {L"one\rtwo\nthree", L"one\r\ntwo\r\nthree"},
    {L"one\n\rtwo", L"one\r\ntwo"},
    {L"\r\n\r\n\r\r\n\n", L"\r\n\r\n\r\n\r\n\r\n"},
    {L"dax\bte", L"date"},
    {L"\b\r\n\b\bx", L"\r\nx"},
    {L"ab\b \bc", L"ac"},
    {L"\xD83D\xDE00\b!", L"!"},
    {L"\xDE00\b!", L"!"},
    {L"bell\a, esc\x1B[1m, del\x7F, tab\t, caf\xE9", L"bell^G, esc^[[1m, del^?, tab\t, caf\xE9"},
};

TEST(PaneTextTest, TheSameIsShownHoweverItArrives) {
    for (const PaneCase& each : kPaneCases) {
        const std::wstring_view received = each.received;
        for (std::size_t piece = 1; piece <= received.size(); ++piece) {
            PaneText text;
            std::wstring shown;
            for (std::size_t at = 0; at < received.size(); at += piece) {
                PaneChange change;
                text.take(received.substr(at, piece), change);
                shown.erase(shown.size() - change.removed);
                shown += change.added;
            }
            EXPECT_EQ(shown, each.shown) << "in pieces of " << piece;
        }
    }
}

TEST(PaneTextTest, NulsAreLeftOut) {
    PaneText text;
    PaneChange change;
    text.take(std::wstring_view(L"a\0b\r\0\n", 6), change);
    EXPECT_EQ(change.added, L"ab\r\n");
}

TEST(PaneTextTest, ALineBeginsWithItsTimeWhenItsFirstCharacterCame) {
    int line = 0;
    PaneText text([&] { return std::to_wstring(++line) + L" "; });
    PaneChange change;
    text.take(L"a\r\n", change);
    text.take(L"\r\n\b\bb\b\b\bc", change);
    EXPECT_EQ(change.added, L"1 a\r\n\r\n2 c");
    text.restart(true);
    change = {};
    text.take(L"\bd", change);
    EXPECT_EQ(change.removed, 0u);
    EXPECT_EQ(change.added, L"3 d");
}

TEST(TextSearchTest, GoesAroundTheEnds) {
    const TextSearch search(L"ok OK\r\nbroken", L"Ok", false);
    EXPECT_EQ(search.count(), 3u);
    EXPECT_EQ(search.next(0), 0u);
    EXPECT_EQ(search.next(1), 3u);
    EXPECT_EQ(search.next(10), 0u);
    EXPECT_EQ(search.next(1000), 0u);
    EXPECT_EQ(search.previous(9), 3u);
    EXPECT_EQ(search.previous(3), 0u);
    EXPECT_EQ(search.previous(0), 9u);
    EXPECT_EQ(search.previous(1000), 9u);
}

TEST(TextSearchTest, FindsNothingWhereThereIsNothing) {
    EXPECT_EQ(TextSearch(L"ok", L"OK", true).next(0), std::nullopt);
    EXPECT_EQ(TextSearch(L"ok", L"", false).next(0), std::nullopt);
    EXPECT_EQ(TextSearch(L"ok", L"", false).previous(1), std::nullopt);
    EXPECT_EQ(TextSearch(L"ok", L"", false).count(), 0u);
    EXPECT_EQ(TextSearch(L"", L"ok", false).previous(0), std::nullopt);
    EXPECT_EQ(TextSearch(L"aaaa", L"aa", true).count(), 2u);
}

TEST(TerminalLayoutTest, NothingStandsOutsideTheWindow) {
    TerminalLayout layout = layOut(300, 200, 30, 20);
    EXPECT_EQ(layout.output, (ui::Rectangle{0, 0, 300, 150}));
    EXPECT_EQ(layout.searchBar, (ui::Rectangle{0, 150, 300, 180}));
    EXPECT_EQ(layout.commandLine, (ui::Rectangle{0, 180, 300, 200}));

    layout = layOut(300, 40, 30, 20);
    EXPECT_EQ(layout.output.height(), 0);
    EXPECT_EQ(layout.searchBar, (ui::Rectangle{0, 0, 300, 20}));
    EXPECT_EQ(layout.commandLine, (ui::Rectangle{0, 20, 300, 40}));

    layout = layOut(0, 10, 0, 20);
    EXPECT_EQ(layout.commandLine, (ui::Rectangle{0, 0, 0, 10}));
    EXPECT_EQ(layout.output, (ui::Rectangle{}));
}

}  // namespace
}  // namespace kel::terminal
