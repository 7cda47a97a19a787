// What the bench's link and its gateway decide.
#include "bench/checksum.h"
#include "bench/instrument/gateway.h"
#include "bench/link/model/answers.h"
#include "bench/link/model/card_listing.h"
#include "bench/link/model/file_name.h"
#include "bench/link/model/firmware_file.h"
#include "tests/core/models/subject.h"

namespace kel::bench {
namespace {

using test::Subject;
using test::Words;

const Subject kListing("line of a listing", [](Words& words) -> std::string {
    const auto entry = cardEntry(words.line());
    if (!entry) return "refused";
    std::string shown = std::to_string(entry->number) + " " + std::to_string(entry->size);
    for (const int part :
         {entry->year, entry->month, entry->day, entry->hour, entry->minute, entry->second})
        shown += " " + std::to_string(part);
    return shown + " " + entry->name;
});

const Subject kNumbers("three numbers that lead a line", [](Words& words) -> std::string {
    const auto numbers = leadingNumbers(words.line(), 3);
    if (!numbers) return "refused";
    std::string shown;
    for (const double number : *numbers)
        shown += std::to_string(number) + ";";
    return shown;
});

const Subject kProgress("progress in 32 bits", [](Words& words) {
    const auto done = words.number<std::int64_t>();
    const Progress progress = progressOf(done, words.number<std::int64_t>());
    return std::to_string(progress.done) + " of " + std::to_string(progress.total);
});

const Subject kFileName("names of files", [](Words& words) {
    std::string shown;
    for (const std::string& name : words.all())
        shown += isFileName(name) ? "+" : "-";
    return shown;
});

// The image as "address:bytes ...", or what is wrong.
const Subject kHex("hexadecimal firmware", [](Words& words) -> std::string {
    try {
        std::string shown;
        for (const auto& [address, bytes] : readIntelHex(words.line()))
            shown += " " + hexadecimal(address, 8) + ":" + bytes;
        return shown;
    } catch (const FirmwareFileError& error) {
        return error.what();
    }
});

// "password fault bytes"; an X stands for as many as make the longest line. What the client gets,
// what the gateway does then, what the instrument gets: at once and byte by byte the same, where
// what follows goes past the gateway, as the line's owner does it.
const Subject kGateway("gateway", [](Words& words) {
    const auto filled = [](std::string text) {
        const std::string most(512 - sizeof "KELGATE \r\n" + 1, 'x');
        for (std::size_t at; (at = text.find('X')) != text.npos;)
            text.replace(at, 1, most);
        return text;
    };
    const std::string password = filled(words.text()), fault = words.text();
    const GatewayOptions options{password, fault == "refuse" ? GatewayFault::kRefuse
                                           : fault == "drop" ? GatewayFault::kDrop
                                           : fault == "hang" ? GatewayFault::kHang
                                                             : GatewayFault::kNone};
    const std::string bytes = filled(words.text());
    const auto shown = [](const Gateway::Reply& reply) {
        const char* then[] = {"wait", "pass on", "close"};
        return reply.answer + then[static_cast<int>(reply.then)] + "|" + reply.passedOn;
    };
    const std::string atOnce = shown(Gateway(options).feed(bytes));
    Gateway slow(options);
    Gateway::Reply reply;
    for (const char byte : bytes) {
        if (reply.then == Gateway::Then::kPassOn) reply.passedOn += byte;
        if (reply.then == Gateway::Then::kWait) reply = slow.feed({&byte, 1});
    }
    return atOnce + (shown(reply) == atOnce ? "" : ", byte by byte " + shown(reply));
});

}  // namespace
}  // namespace kel::bench
