#include "hosts/kelrun/model/transcript.h"

#include <algorithm>
#include <utility>

#include "hosts/model/json.h"
#include "hosts/model/unicode.h"

namespace kel::kelrun {
namespace {

// In the order of the kinds.
constexpr const char* kKindNames[] = {"line", "sent", "received", "echo", "error", "result"};

constexpr std::u16string_view kEchoedErrorMark = u"\r\nERROR: ";

// An instrument that never ends a line must not fill the memory.
constexpr std::size_t kLongestReceived = 4096;

// True when one of the texts is the beginning of the other.
bool agree(std::u16string_view left, std::u16string_view right) {
    const std::size_t size = std::min(left.size(), right.size());
    return left.substr(0, size) == right.substr(0, size);
}

// Size of the longest end of the text that may be the beginning of a mark.
std::size_t sizeOfBegunMark(std::u16string_view text) {
    std::size_t size = std::min(text.size(), kEchoedErrorMark.size() - 1);
    while (!kEchoedErrorMark.starts_with(text.substr(text.size() - size)))
        --size;
    return size;
}

}  // namespace

std::string jsonLine(const Entry& entry) {
    if (entry.kind == EntryKind::Error) return {};
    hosts::Json::Object members{{"ms", entry.milliseconds},
                                {"kind", kKindNames[static_cast<int>(entry.kind)]},
                                {"text", entry.text},
                                {"file", entry.file},
                                {"line", entry.line}};
    if (entry.kind == EntryKind::Result) members.push_back({"code", entry.code});
    return hosts::write(members) + '\n';
}

void Transcript::lineStarted(std::string_view file, std::size_t line) {
    finishShown();
    file_ = file;
    line_ = line;
    tell(EntryKind::Line, file == script_ ? hosts::toUtf8(source_.line(line)) : std::string());
}

void Transcript::sent(std::string_view text) {
    finishShown();
    tell(EntryKind::Sent, text);
}

void Transcript::errorFound(std::string_view file, std::size_t line, std::size_t column,
                            std::u16string_view message) {
    file_ = file;
    line_ = line;
    expected_.emplace_back(message);
    const std::string text = hosts::toUtf8(message);
    Entry error = entry(EntryKind::Error, text);
    error.column = column;
    tell_(error);
}

// The stream collects what it shows: an error may stand in the middle of a piece, or in two.
void Transcript::shown(std::u16string_view piece) {
    undecided_ += piece;
    while (!expected_.empty()) {
        const std::size_t mark = undecided_.find(kEchoedErrorMark);
        const std::size_t decided =
            mark != std::u16string::npos ? mark : undecided_.size() - sizeOfBegunMark(undecided_);
        receive(std::u16string_view(undecided_).substr(0, decided));
        undecided_.erase(0, decided);
        if (mark == std::u16string::npos) return;

        const auto message = std::u16string_view(undecided_).substr(kEchoedErrorMark.size());
        while (!expected_.empty() && !agree(expected_.front(), message))
            expected_.pop_front();
        if (expected_.empty()) break;
        const std::size_t size = kEchoedErrorMark.size() + expected_.front().size();
        if (undecided_.size() < size) return;
        finishReceived();
        tell(EntryKind::Echo, hosts::toUtf8(std::u16string_view(undecided_).substr(0, size)));
        undecided_.erase(0, size);
        expected_.pop_front();
    }
    receive(std::exchange(undecided_, {}));
}

void Transcript::ended(int exitCode, std::string_view words) {
    finishShown();
    Entry result = entry(EntryKind::Result, words);
    result.code = exitCode;
    tell_(result);
}

void Transcript::receive(std::u16string_view text) {
    for (const char16_t character : text) {
        received_ += character;
        if (character == u'\n' || received_.size() == kLongestReceived) finishReceived();
    }
}

void Transcript::finishReceived() {
    if (!received_.empty()) tell(EntryKind::Received, hosts::toUtf8(std::exchange(received_, {})));
}

void Transcript::finishShown() {
    receive(std::exchange(undecided_, {}));
    finishReceived();
}

void Transcript::tell(EntryKind kind, std::string_view text) {
    tell_(entry(kind, text));
}

Entry Transcript::entry(EntryKind kind, std::string_view text) const {
    return {kind, now_(), text, file_, line_};
}

}  // namespace kel::kelrun
