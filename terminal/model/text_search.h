#pragma once
// The search in the output pane.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kel::terminal {

// Looks for one text in a copy of another. Places are counted in characters.
class TextSearch {
public:
    // Without `matchesCase` capital and small letters are the same.
    TextSearch(std::wstring_view text, std::wstring_view wanted, bool matchesCase);

    // The first place at or behind one, around the end; the last one before it, around the
    // beginning. Nothing where the text does not have it, or nothing is wanted.
    std::optional<std::size_t> next(std::size_t from) const;
    std::optional<std::size_t> previous(std::size_t before) const;

    // How many there are that do not overlap.
    std::size_t count() const;

private:
    std::wstring text_;
    std::wstring wanted_;
};

}  // namespace kel::terminal
