#pragma once
// What happens in a run, told in JSON, one object a line.

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "hosts/model/json.h"
#include "hosts/shared/model/source_text.h"

namespace kel::kelrun {

// Each object tells when ("ms" since the start), what ("kind" and "text") and where the run then
// was ("file" and "line"). Texts are as they came, line ends included.
class Transcript {
public:
    using Milliseconds = std::function<long long()>;
    using Write = std::function<void(std::string_view line)>;

    // `script` is the name under which the events tell of the lines of `source`.
    Transcript(Milliseconds now, Write write, std::string script, host::SourceText source)
        : now_(std::move(now)),
          write_(std::move(write)),
          script_(std::move(script)),
          source_(source) {}

    void lineStarted(std::string_view file, std::size_t line);
    void sent(std::string_view text);

    // An error, with its place. The stream may, but need not, be about to show it: as "echo" then.
    void errorFound(std::string_view file, std::size_t line, std::u16string_view message);

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
    void write(std::string_view kind, std::string_view text);
    hosts::Json::Object entry(std::string_view kind, std::string_view text) const;

    Milliseconds now_;
    Write write_;
    std::string script_;
    host::SourceText source_;
    std::string file_;
    std::size_t line_ = 0;
    std::deque<std::u16string> expected_;  // messages that may be shown, in their order
    std::u16string undecided_;             // the beginning of such a message, perhaps
    std::u16string received_;              // a line that has not ended
    bool isIncomplete_ = false;
};

}  // namespace kel::kelrun
