// What the terminal decides.
#include "terminal/model/command_history.h"
#include "terminal/model/pane_text.h"
#include "terminal/model/terminal_layout.h"
#include "terminal/model/text_search.h"
#include "tests/core/models/subject.h"

namespace kel::terminal {
namespace {

using test::narrow;
using test::shown;
using test::Subject;
using test::Words;

// "add command" shows all entries, "older text" and "newer text" where a step leads.
const Subject kHistory("history of commands", [history = CommandHistory()](const std::string& act,
                                                                           Words& words) mutable {
    if (act == "older" || act == "newer") {
        const std::wstring present = words.wide();
        const auto* found = act == "older" ? history.older(present) : history.newer(present);
        return found ? narrow(*found) : "none";
    }
    for (const std::wstring& command : words.take<std::vector<std::wstring>>())
        history.add(command);
    return shown(history.entries());
});

std::wstring shownInPieces(std::wstring_view received, std::size_t piece) {
    PaneText text;
    std::wstring all;
    for (std::size_t at = 0; at < received.size(); at += piece) {
        PaneChange change;
        text.take(received.substr(at, piece), change);
        all.erase(all.size() - change.removed);
        all += change.added;
    }
    return all;
}

// The same however it arrives. Tildes stand for halves of a character.
const Subject kPane("text of the pane", [](Words& words) {
    std::wstring received = test::wide(words.line());
    for (wchar_t& character : received)
        if (character == L'~') character = L'\xDE00';
    const std::wstring whole = shownInPieces(received, received.size());
    for (std::size_t piece = 1; piece < received.size(); ++piece)
        if (shownInPieces(received, piece) != whole) return "another in " + std::to_string(piece);
    return narrow(whole);
});

// Texts that come, with a restart between them; each line that begins is counted.
const Subject kTimes("lines with their times", [](const std::vector<std::wstring>& texts) {
    int line = 0;
    PaneText text([&] { return L"(" + std::to_wstring(++line) + L")"; });
    std::string all;
    for (const std::wstring& each : texts) {
        PaneChange change;
        text.take(each, change);
        text.restart(true);
        all += std::to_string(change.removed) + narrow(change.added) + "; ";
    }
    return all;
});

// "text wanted case place": the next and the previous one of a place, and how many there are.
const Subject kSearch("search", [](const std::wstring& text, const std::wstring& wanted,
                                   const std::string& letters, std::size_t from) {
    const TextSearch search(text, wanted, letters == "case");
    return shown(search.next(from), search.previous(from), "of", search.count());
});

// "width height search-bar command-line": the width, and where each of the three parts ends.
const Subject kLayout("layout of the terminal", [](int width, int height, int bar, int line) {
    const TerminalLayout layout = layOut(width, height, bar, line);
    std::string places;
    for (const ui::Rectangle& part : {layout.output, layout.searchBar, layout.commandLine})
        places += shown(part.left, part.top, part.right, part.bottom) + "; ";
    return places;
});

}  // namespace
}  // namespace kel::terminal
