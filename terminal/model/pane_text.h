#pragma once
// What the output pane shows of the characters that arrive.

#include <functional>
#include <string>
#include <string_view>

namespace kel::terminal {

// A change at the end of the pane's text: characters go, then others come.
struct PaneChange {
    std::size_t removed = 0;
    std::wstring added;
};

// Follows the text from its beginning: lines end with CR LF whatever the instrument sends (CR, LF
// or both in either order), a backspace takes back a character of its line, NUL is left out, and
// other control characters than the tab show as ^G and the like.
class PaneText {
public:
    // Gives what a line begins with, such as the time; empty for nothing.
    explicit PaneText(std::function<std::wstring()> lineStart = {})
        : lineStart_(std::move(lineStart)) {}

    // Adds to a change that has not been shown yet.
    void take(std::wstring_view received, PaneChange& change);

    // What stood there is not the text that was taken: nothing of it can be taken back.
    void restart(bool isAtLineStart);

    bool isAtLineStart() const { return atLineStart_; }

private:
    void show(std::wstring_view text, PaneChange& change);
    void takeBack(PaneChange& change);
    void endLine(PaneChange& change);

    std::function<std::wstring()> lineStart_;
    // The characters of the last line that can be taken back.
    std::wstring line_;
    bool atLineStart_ = true;
    // The half of a line end that has already ended the line; 0 for none.
    wchar_t lineEnd_ = 0;
};

}  // namespace kel::terminal
