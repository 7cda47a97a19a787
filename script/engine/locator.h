#pragma once
// From a place in a script's text to its line and column.

#include <cstddef>
#include <string_view>

namespace kel::script {

struct Position {
    std::size_t line = 1;    // from 1; CR LF is one break, as is a lone CR or LF
    std::size_t column = 1;  // in bytes, from 1
};

// Remembers the last answer: asking for places in the order of the text costs one pass over it.
class Locator {
public:
    explicit Locator(std::string_view text)
        : text_(text), hasReturns_(text.find('\r') != std::string_view::npos) {}

    // `where` points into the text or at its end.
    Position locate(const char* where);

private:
    bool isBreak(std::size_t offset) const;
    bool skipToBreak(std::size_t end);

    std::string_view text_;
    bool hasReturns_;
    std::size_t line_ = 1;
    std::size_t lineStart_ = 0;
    std::size_t scanned_ = 0;  // line breaks before this offset are counted
};

}  // namespace kel::script
