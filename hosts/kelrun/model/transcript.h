#pragma once
// What happens in a run, told entry by entry to those who write it down.

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "hosts/kelrun/model/source_text.h"

namespace kel::kelrun {

enum class EntryKind { Line, Sent, Received, Echo, Error, Result };

// Texts are UTF-8, as they came, line ends included; they live as long as the call.
struct Entry {
    EntryKind kind;
    long long milliseconds;  // since the start
    std::string_view text;
    std::string_view file;  // where the run then was
    std::size_t line;
    std::size_t column = 0;  // of an error, from 1; 0 when it is unknown
    int code = 0;            // of a result: the exit code
};

// An object in JSON on a line of its own: when ("ms"), what ("kind" and "text") and where ("file"
// and "line"). Empty for an error: what is shown of it comes as an echo.
std::string jsonLine(const Entry& entry);

class Transcript {
public:
    using Milliseconds = std::function<long long()>;
    using Tell = std::function<void(const Entry&)>;

    // `script` is the name under which the events tell of the lines of `source`.
    Transcript(Milliseconds now, Tell tell, std::string script, SourceText source)
        : now_(std::move(now)),
          tell_(std::move(tell)),
          script_(std::move(script)),
          source_(source) {}

    void lineStarted(std::string_view file, std::size_t line);
    void sent(std::string_view text);

    // An error, with its place. The stream may, but need not, be about to show it: as an echo then.
    void errorFound(std::string_view file, std::size_t line, std::size_t column,
                    std::u16string_view message);

    // A piece of what the stream shows; pieces need not be lines.
    void shown(std::u16string_view piece);

    void ended(int exitCode, std::string_view words);

    // Notes that something that happened could not be told.
    void lose() noexcept { isIncomplete_ = true; }
    bool isIncomplete() const { return isIncomplete_; }

private:
    void receive(std::u16string_view text);
    void finishReceived();
    void finishShown();
    void tell(EntryKind kind, std::string_view text);
    Entry entry(EntryKind kind, std::string_view text) const;

    Milliseconds now_;
    Tell tell_;
    std::string script_;
    SourceText source_;
    std::string file_;
    std::size_t line_ = 0;
    std::deque<std::u16string> expected_;  // messages that may be shown, in their order
    std::u16string undecided_;             // the beginning of such a message, perhaps
    std::u16string received_;              // a line that has not ended
    bool isIncomplete_ = false;
};

}  // namespace kel::kelrun
