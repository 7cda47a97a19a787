#include "bench/link/access/card_dialogue.h"

#include <algorithm>

#include "com/text.h"

namespace kel::bench {
namespace {

constexpr int kReadAttempts = 3;
constexpr long kFormatTimeout = 60000;
constexpr long kStopBreak = 300;
constexpr long kStopTimeout = 300;
constexpr std::string_view kRefusal = "ERROR: ";

// Ten bits a byte, and twice that for good measure.
long transferTimeout(std::int64_t bytes, long rate) {
    return Dialogue::kTimeout + static_cast<long>(bytes * 20'000 / std::max(rate, 1L));
}

}  // namespace

CardDialogue::CardDialogue(IKelCommunicator* link, const HomeThread& home,
                           std::function<bool()> isAborted)
    : port_(link, home), dialogue_(port_, std::move(isAborted)) {}

CardStatus CardDialogue::status() {
    const auto status = cardStatus(ask("card"));
    if (!status) throw NoAnswer(L"The instrument does not tell the state of its card");
    return *status;
}

std::vector<CardEntry> CardDialogue::list() {
    const auto count = static_cast<std::size_t>(status().files);
    std::vector<CardEntry> entries;
    while (entries.size() < count) {
        const std::string page = ask("card list " + std::to_string(entries.size()));
        for (std::string_view rest = page; !rest.empty();) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            const auto entry = cardEntry(rest.substr(0, end));
            if (!entry) throw NoAnswer(L"The instrument's list of files is damaged");
            entries.push_back(*entry);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        if (page.empty()) throw NoAnswer(L"The instrument's list of files is damaged");
    }
    return entries;
}

std::string CardDialogue::read(std::int64_t file, std::int64_t offset, std::int64_t count,
                               long rate) {
    const std::string command = "card read " + std::to_string(file) + " " + std::to_string(offset) +
                                " " + std::to_string(count);
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        const auto bytes = dialogue_.askForBlock(command, transferTimeout(count, rate));
        if (bytes && static_cast<std::int64_t>(bytes->size()) == count) return *bytes;
    }
    throw NoAnswer(L"The instrument does not give the file");
}

void CardDialogue::setRate(long rate) {
    ask("card rate set " + std::to_string(rate));
}

void CardDialogue::format() {
    ask("card format", kFormatTimeout);
}

void CardDialogue::stop() {
    try {
        port_.sendBreak(kStopBreak);
        // The prompt that comes may be the one before the break; after this answer none is left.
        Dialogue(port_).ask("card rate", kStopTimeout);
    } catch (const com::Error&) {
        // An instrument that has gone does nothing any more.
    }
}

std::string CardDialogue::ask(const std::string& command, long timeout) {
    const std::string answer = dialogue_.ask(command, timeout);
    if (answer.starts_with(kRefusal)) {
        throw NoAnswer(L"The instrument refuses: " +
                       com::widen(std::string_view(answer).substr(kRefusal.size())));
    }
    return answer;
}

}  // namespace kel::bench
