#include "terminal/model/pane_text.h"

namespace kel::terminal {
namespace {

// Nobody takes back more than that; lines without an end would grow for ever.
constexpr std::size_t kMostTakenBack = 4096;

bool isHighSurrogate(wchar_t character) {
    return character >= 0xD800 && character <= 0xDBFF;
}

bool isLowSurrogate(wchar_t character) {
    return character >= 0xDC00 && character <= 0xDFFF;
}

}  // namespace

void PaneText::take(std::wstring_view received, PaneChange& change) {
    for (const wchar_t character : received) {
        if (character == L'\0') continue;
        if (character == L'\r' || character == L'\n') {
            const bool isOtherHalf = lineEnd_ != 0 && lineEnd_ != character;
            lineEnd_ = isOtherHalf ? L'\0' : character;
            if (!isOtherHalf) endLine(change);
            continue;
        }
        lineEnd_ = 0;
        if (character == L'\b') {
            takeBack(change);
        } else if (character == 0x7F) {
            show(L"^?", change);
        } else if (character < L' ' && character != L'\t') {
            const wchar_t caret[] = {L'^', static_cast<wchar_t>(character + L'@')};
            show({caret, 2}, change);
        } else {
            show({&character, 1}, change);
        }
    }
}

void PaneText::restart(bool isAtLineStart) {
    line_.clear();
    atLineStart_ = isAtLineStart;
    lineEnd_ = 0;
}

void PaneText::show(std::wstring_view text, PaneChange& change) {
    if (atLineStart_ && lineStart_) change.added += lineStart_();
    atLineStart_ = false;
    change.added += text;
    line_ += text;
    if (line_.size() > 2 * kMostTakenBack) line_.erase(0, line_.size() - kMostTakenBack);
}

void PaneText::takeBack(PaneChange& change) {
    if (line_.empty()) return;
    const bool isPair = line_.size() > 1 && isLowSurrogate(line_.back()) &&
                        isHighSurrogate(line_[line_.size() - 2]);
    for (int i = isPair ? 2 : 1; i > 0; --i) {
        line_.pop_back();
        if (change.added.empty()) {
            ++change.removed;
        } else {
            change.added.pop_back();
        }
    }
}

void PaneText::endLine(PaneChange& change) {
    change.added += L"\r\n";
    line_.clear();
    atLineStart_ = true;
}

}  // namespace kel::terminal
