// What the terminal decides.
#include "terminal/model/command_history.h"
#include "terminal/model/pane_text.h"
#include "terminal/model/terminal_layout.h"
#include "terminal/model/text_search.h"
#include "tests/core/models/subject.h"

namespace kel::terminal {
namespace {

using test::narrow;
using test::Subject;
using test::Words;

// "add command" shows all entries, "older text" and "newer text" where a step leads.
const Subject kHistory("history of commands", [] {
    return [history = CommandHistory()](Words& words) mutable {
        const std::string act = words.text();
        if (act == "older" || act == "newer") {
            const std::wstring present = words.wide();
            const auto* found = act == "older" ? history.older(present) : history.newer(present);
            return found ? narrow(*found) : "none";
        }
        for (const std::string& command : words.all())
            history.add(test::wide(command));
        std::wstring shown;
        for (const std::wstring& entry : history.entries())
            shown += L" " + entry;
        return narrow(shown);
    };
});

std::wstring shownInPieces(std::wstring_view received, std::size_t piece) {
    PaneText text;
    std::wstring shown;
    for (std::size_t at = 0; at < received.size(); at += piece) {
        PaneChange change;
        text.take(received.substr(at, piece), change);
        shown.erase(shown.size() - change.removed);
        shown += change.added;
    }
    return shown;
}

// The same however it arrives. Tildes stand for halves of a character.
const Subject kPane("text of the pane", [](Words& words) {
    std::wstring received = test::wide(words.line());
    for (wchar_t& character : received)
        if (character == L'~') character = L'\xDE00';
    const std::wstring shown = shownInPieces(received, received.size());
    for (std::size_t piece = 1; piece < received.size(); ++piece)
        if (shownInPieces(received, piece) != shown) return "another in " + std::to_string(piece);
    return narrow(shown);
});

// "text wanted case place": the next and the previous one of a place, and how many there are.
const Subject kSearch("search", [](Words& words) {
    const std::wstring text = words.wide(), wanted = words.wide();
    const TextSearch search(text, wanted, words.text() == "case");
    const auto from = words.number<std::size_t>();
    const auto shown = [](std::optional<std::size_t> place) {
        return place ? std::to_string(*place) : "none";
    };
    return shown(search.next(from)) + " " + shown(search.previous(from)) + " of " +
           std::to_string(search.count());
});

// "width height search-bar command-line": the width, and where each of the three parts ends.
const Subject kLayout("layout of the terminal", [](Words& words) {
    const int width = words.number(), height = words.number(), bar = words.number();
    const TerminalLayout layout = layOut(width, height, bar, words.number());
    std::string shown;
    for (const ui::Rectangle& part : {layout.output, layout.searchBar, layout.commandLine})
        shown += " " + std::to_string(part.left) + "," + std::to_string(part.top) + " " +
                 std::to_string(part.right) + "," + std::to_string(part.bottom);
    return shown;
});

}  // namespace
}  // namespace kel::terminal
