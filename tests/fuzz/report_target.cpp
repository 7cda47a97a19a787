#include <algorithm>

#include "hosts/kelrun/model/report.h"
#include "hosts/model/unicode.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {
namespace {

constexpr std::string_view kRowEnd = "</tr>\n";
constexpr std::string_view kTail = "</table>\n</body>\n</html>\n";

bool take(std::string_view& rest, std::string_view begin) {
    if (!rest.starts_with(begin)) return false;
    rest.remove_prefix(begin.size());
    return true;
}

// Text, references to characters, and names of characters: nothing else.
bool isHarmless(std::string_view text) {
    while (!text.empty()) {
        if (take(text, "&amp;") || take(text, "&lt;") || take(text, "&gt;") ||
            take(text, "&quot;") || take(text, "&#39;"))
            continue;
        if (take(text, "<i>U+")) {
            text.remove_prefix(std::min(text.find_first_not_of("0123456789ABCDEF"), text.size()));
            if (!take(text, "</i>")) return false;
            continue;
        }
        const auto c = static_cast<unsigned char>(text.front());
        if (std::string_view("<>&\"'\x7F").find(text.front()) != std::string_view::npos)
            return false;
        if (c < ' ' && c != '\t') return false;
        text.remove_prefix(1);
    }
    return true;
}

}  // namespace

void reportAnything(std::string_view input) {
    const std::string name(input.substr(0, 8));
    std::string page;
    kelrun::Report report({name, name, name, name, name},
                          [&](std::uint64_t offset, std::string_view text) {
                              require(offset <= page.size(), "a page has no holes");
                              page.resize(std::max<std::size_t>(page.size(), offset + text.size()));
                              page.replace(offset, text.size(), text);
                          });
    const std::size_t table = page.find("<table>");
    while (input.size() >= 2) {
        const auto kind = static_cast<kelrun::EntryKind>(static_cast<unsigned char>(input[0]) % 6);
        const std::size_t size = static_cast<unsigned char>(input[1]);
        const std::string_view text = input.substr(2, size);
        input.remove_prefix(2 + text.size());
        const std::size_t before = page.size();
        report.tell({kind, 1, text, "a.kel", size});
        if (kind == kelrun::EntryKind::Echo) {
            require(page.size() == before, "an error has one row");
            continue;
        }
        const std::string_view added = std::string_view(page).substr(before - kTail.size());
        require(added.ends_with(kTail), "a page is whole after every entry");
        require(added.find("</html>") == added.size() - 8, "a page has one end");
        require(hosts::tryToUtf16(added).has_value(), "a row is UTF-8");
        const std::size_t cell = added.rfind("<td>") + 4;
        const std::size_t end = added.size() - kTail.size() - kRowEnd.size();
        require(isHarmless(added.substr(cell, end - cell)), "a text is no markup");
    }
    require(page.find("<table>") == table, "what stands before the table keeps its room");
    require(hosts::tryToUtf16(page).has_value(), "a page is UTF-8");
    const std::string_view title = std::string_view(page).substr(page.find("<h1>Run of ") + 11);
    const std::string_view tab = std::string_view(page).substr(page.find("<title>") + 7);
    require(tab.find('<') == tab.find("</title>"), "no element stands in the name of the page");
    require(isHarmless(title.substr(0, title.find("</h1>"))), "a name is no markup");
}

}  // namespace kel::fuzz
