#pragma once
// The lines of a script, as they are shown beside what is said about them.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kel::host {

// How many bytes a character takes in the user's code page.
using ByteCount = std::function<std::size_t(std::u16string_view character)>;

// Refers to the text of a script, which must outlive it. Remembers where it was last: asking for
// lines in their order costs one pass over the text.
class SourceText {
public:
    explicit SourceText(std::wstring_view text) : text_(text), end_(findEnd()) {}

    // A line without its end, counted from 1; empty when there is none. CR LF, LF and CR end lines.
    std::u16string line(std::size_t number);

    // The line and, below it, a caret under the character to which the byte at `column` (from 1; 0:
    // no caret) belongs, and behind that a hint, which may be empty; each line with a line feed.
    // Empty when there is no such line, or it is too long to show.
    std::string excerpt(std::size_t number, std::size_t column, const ByteCount& bytesOf,
                        std::string_view hint = {});

private:
    bool moveTo(std::size_t number);
    std::size_t findEnd() const;

    std::wstring_view text_;
    std::size_t number_ = 1;
    std::size_t start_ = 0;
    std::size_t end_;
};

}  // namespace kel::host
