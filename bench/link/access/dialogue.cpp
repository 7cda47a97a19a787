#include "bench/link/access/dialogue.h"

#include "bench/checksum.h"
#include "bench/link/model/answers.h"

namespace kel::bench {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kPrompt = "\r\n>";
constexpr std::string_view kOk = "OK";

bool endsWithPrompt(std::string_view text) {
    return text.ends_with(kPrompt);
}

}  // namespace

Dialogue::Dialogue(QuietPort& port, std::function<bool()> isAborted)
    : port_(port), isAborted_(std::move(isAborted)) {}

std::string Dialogue::ask(std::string_view command, long timeout) {
    std::string answer = exchange(command, timeout, endsWithPrompt);
    answer.resize(answer.size() - kPrompt.size());
    std::erase(answer, '\r');
    return answer;
}

bool Dialogue::tell(std::string_view command, long timeout) {
    return ask(command, timeout) == kOk;
}

std::optional<std::string> Dialogue::askForBlock(std::string_view command, long timeout) {
    std::optional<BlockHeader> header;
    std::size_t start = 0;
    const std::string answer = exchange(command, timeout, [&](std::string_view text) {
        if (!header) {
            const std::size_t end = text.find(kLineEnd);
            if (end == text.npos) return false;
            header = blockHeader(text.substr(0, end));
            start = end + kLineEnd.size();
        }
        // Bytes of any value: their number tells where they end, not the prompt.
        return header ? text.size() >= start + header->count + kPrompt.size()
                      : endsWithPrompt(text);
    });
    if (!header) return std::nullopt;
    const std::string bytes = answer.substr(start, header->count);
    if (crc32(bytes) != header->checksum) return std::nullopt;
    return bytes;
}

std::optional<std::string> Dialogue::beginStream(std::string_view command, long timeout) {
    const std::string started = std::string(kOk).append(kLineEnd);
    const std::string answer = exchange(command, timeout, [&](std::string_view text) {
        return text.starts_with(started) || endsWithPrompt(text);
    });
    if (!answer.starts_with(started)) return std::nullopt;
    return answer.substr(started.size());
}

std::string Dialogue::finish(long timeout) {
    return collect(timeout, endsWithPrompt);
}

template <class Done>
std::string Dialogue::exchange(std::string_view command, long timeout, Done&& done) {
    port_.take();
    const std::string echo = std::string(command).append(kLineEnd);
    port_.write(std::string(command) + '\r');
    std::size_t start = std::string::npos;
    const std::string received = collect(timeout, [&](std::string_view text) {
        if (start == text.npos) {
            start = text.find(echo);
            if (start == text.npos) return false;
            start += echo.size();
        }
        return done(text.substr(start));
    });
    return received.substr(start);
}

template <class Done>
std::string Dialogue::collect(long timeout, Done&& done) {
    const auto deadline = clock_.after(timeout);
    std::string received;
    for (;;) {
        if (isAborted_ && isAborted_()) throw Aborted();
        const bool isLate = hasPassed(deadline);
        received += port_.take();
        if (done(received)) return received;
        if (isLate) throw NoAnswer(L"The instrument does not answer");
        port_.rest();
    }
}

}  // namespace kel::bench
