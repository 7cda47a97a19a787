#include "bench/instrument/service_commands.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "bench/checksum.h"

namespace kel::bench {

namespace {

constexpr std::size_t kListed = 200;
constexpr std::int64_t kLongestBlock = 4096;
constexpr double kMostCode = 2147483647;
constexpr long kRates[] = {9600, 19200, 38400, 57600, 115200};

// A whole number that is not negative, in decimal or other digits.
std::int64_t number(std::string_view& arguments, const char* what, int base = 10) {
    const auto word = requiredWord(arguments, what);
    std::int64_t value = 0;
    const auto end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value, base);
    if (error != std::errc{} || stop != end || value < 0) {
        throw CommandError(std::string("bad ") + what);
    }
    return value;
}

// An address of the firmware's memory, or its end.
std::size_t address(std::string_view& arguments) {
    const auto value = number(arguments, "address", 16);
    if (value > static_cast<std::int64_t>(Firmware::kSize)) throw CommandError("bad address");
    return static_cast<std::size_t>(value);
}

// A number that must be below a limit.
std::size_t numberBelow(std::int64_t limit, std::string_view& arguments, const char* what) {
    const auto value = number(arguments, what);
    if (value >= limit) throw CommandError(std::string("bad ") + what);
    return static_cast<std::size_t>(value);
}

std::size_t blockLength(std::string_view& arguments) {
    const auto length = numberBelow(kLongestBlock + 1, arguments, "count");
    if (length == 0) throw CommandError("bad count");
    return length;
}

Answer block(std::string bytes, Duration takes = {}) {
    const auto header = "DATA " + std::to_string(bytes.size()) + " " + hexadecimal(crc32(bytes), 8);
    return {header, takes, AfterAnswer::kPrompt, std::move(bytes)};
}

std::string bytesOfDigits(std::string_view digits) {
    std::string bytes;
    for (; digits.size() >= 2; digits.remove_prefix(2)) {
        std::string_view pair = digits.substr(0, 2);
        bytes += static_cast<char>(number(pair, "bytes", 16));
    }
    if (bytes.empty() || !digits.empty()) throw CommandError("bad bytes");
    return bytes;
}

Firmware::Bank bank(std::string_view& arguments) {
    const auto word = requiredWord(arguments, "bank");
    if (equalIgnoringCase(word, "main")) return Firmware::kMain;
    if (equalIgnoringCase(word, "companion")) return Firmware::kCompanion;
    throw CommandError("bad bank, main or companion expected");
}

Card& requiredCard(Call& call) {
    auto& card = call.device.card();
    if (!card.present()) throw CommandError("no card");
    if (card.busy(call.now)) throw CommandError("the card is being formatted");
    return card;
}

std::size_t fileNumber(const Card& card, std::string_view& arguments) {
    return numberBelow(static_cast<std::int64_t>(card.files().size()), arguments, "file number");
}

void requireCompass(Call& call) {
    if (!call.device.sensors().hasCompass()) throw CommandError("no compass");
}

}  // namespace

Answer card(Call& call) {
    if (!call.arguments.empty()) throw CommandError("unknown command of the card");
    const auto& card = requiredCard(call);
    return {"Files: " + std::to_string(card.files().size()) + "\nUsed: " +
            std::to_string(card.used()) + "\nCapacity: " + std::to_string(card.capacity()) +
            "\nRate: " + std::to_string(card.rate())};
}

Answer cardList(Call& call) {
    const auto& card = requiredCard(call);
    const auto first = fileNumber(card, call.arguments);
    std::string lines;
    for (auto i = first; i < std::min(first + kListed, card.files().size()); ++i) {
        const auto& file = card.files()[i];
        lines += std::to_string(i) + " " + std::to_string(file.size) + " " +
                 formatMoment(file.time) + " " + file.name + "\n";
    }
    lines.pop_back();
    return {lines};
}

Answer cardRead(Call& call) {
    const auto& card = requiredCard(call);
    const auto& file = card.files()[fileNumber(card, call.arguments)];
    const auto offset = number(call.arguments, "offset");
    const auto length = blockLength(call.arguments);
    if (offset >= file.size || static_cast<std::int64_t>(length) > file.size - offset) {
        throw CommandError("beyond the end of the file");
    }
    // Ten bits a byte.
    const Duration takes = std::chrono::microseconds{length * 10'000'000 / card.rate()};
    return block(cardContent(file, offset, length), takes);
}

Answer cardRate(Call& call) {
    auto& card = requiredCard(call);
    return showOrSet(call, "Rate: " + std::to_string(card.rate()), [&] {
        const auto rate = number(call.arguments, "rate");
        if (std::find(std::begin(kRates), std::end(kRates), rate) == std::end(kRates)) {
            throw CommandError("bad rate");
        }
        card.setRate(static_cast<long>(rate));
    });
}

Answer cardFormat(Call& call) {
    requiredCard(call).format(call.now);
    return {kDone, Card::kFormatTime};
}

Answer firmware(Call& call) {
    if (!call.arguments.empty()) throw CommandError("unknown command of the firmware");
    return {"Memory: " + std::to_string(Firmware::kSize) +
            "\nState: " + (call.device.firmware().complete() ? "complete" : "incomplete")};
}

Answer firmwareBegin(Call& call) {
    const auto into = bank(call.arguments);
    const auto code = parseNumber(requiredWord(call.arguments, "access code"));
    if (!code || std::abs(*code) > kMostCode) throw CommandError("bad access code");
    call.device.firmware().begin(into, static_cast<long>(*code));
    return {kDone, std::chrono::milliseconds{500}};
}

Answer firmwareWrite(Call& call) {
    const auto place = address(call.arguments);
    auto bytes = bytesOfDigits(requiredWord(call.arguments, "bytes"));
    unsigned sum = 0;
    for (const char byte : bytes)
        sum += static_cast<unsigned char>(byte);
    if (sum % 256 != 0) throw CommandError("wrong sum");
    bytes.pop_back();
    call.device.firmware().write(place, bytes);
    return {kDone};
}

Answer firmwareEnd(Call& call) {
    call.device.firmware().end(static_cast<std::uint32_t>(number(call.arguments, "checksum", 16)));
    return {kDone};
}

Answer firmwareRead(Call& call) {
    const auto from = bank(call.arguments);
    const auto place = address(call.arguments);
    const auto length = blockLength(call.arguments);
    return block(std::string(call.device.firmware().read(from, place, length)));
}

Answer compass(Call& call) {
    if (!call.arguments.empty()) throw CommandError("unknown command of the compass");
    requireCompass(call);
    return {"Compass: ready"};
}

Answer compassCalibrate(Call& call) {
    requireCompass(call);
    return {kDone, {}, AfterAnswer::kCalibrate};
}

Answer compassScores(Call& call) {
    requireCompass(call);
    const auto scores = call.device.sensors().scores();
    if (!scores) throw CommandError("not calibrated");
    return {"Scores: " + std::to_string(scores->horizontal) + " " +
            std::to_string(scores->vertical) + " " + formatNumber(scores->field, 2)};
}

Answer pressureCollect(Call&) {
    return {kDone, {}, AfterAnswer::kCollect};
}

}  // namespace kel::bench
