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

using test::shown;
using test::Subject;
using test::Words;

const Subject kListing("line of a listing", [](Words& words) -> std::string {
    const auto entry = cardEntry(words.line());
    if (!entry) return "refused";
    return shown(entry->number, entry->size, entry->year, entry->month, entry->day, entry->hour,
                 entry->minute, entry->second, entry->name);
});

const Subject kNumbers("three numbers that lead a line", [](Words& words) -> std::string {
    const auto numbers = leadingNumbers(words.line(), 3);
    if (!numbers) return "refused";
    std::string text;
    for (const double number : *numbers)
        text += std::to_string(number) + ";";
    return text;
});

const Subject kProgress("progress in 32 bits", [](std::int64_t done, std::int64_t total) {
    const Progress progress = progressOf(done, total);
    return shown(progress.done, "of", progress.total);
});

const Subject kFileName("names of files", [](const std::vector<std::string>& names) {
    std::string signs;
    for (const std::string& name : names)
        signs += isFileName(name) ? "+" : "-";
    return signs;
});

// "address:bytes ..."
std::string textOf(const FirmwareImage& image) {
    std::string text;
    for (const auto& [address, bytes] : image)
        text += " " + hexadecimal(address, 8) + ":" + bytes;
    return text;
}

const Subject kHex("hexadecimal firmware",
                   [](Words& words) { return textOf(readIntelHex(words.line())); });
const Subject kFirmware("any firmware", [](Words& words) { return textOf(readAny(words.line())); });
const Subject kCutPackage("beginnings of a package", [](Words& words) {
    return test::ofEachBeginning(
        words.line(), [](const std::string& beginning) { return textOf(readPackage(beginning)); });
});

// "password fault bytes"; an X stands for as many as make the longest line. What the client gets,
// what the gateway does then, what the instrument gets: at once and byte by byte the same, where
// what follows goes past the gateway, as the line's owner does it.
const Subject kGateway("gateway", [](std::string password, std::string fault, std::string bytes) {
    for (std::string* text : {&password, &bytes}) {
        const std::string most(512 - sizeof "KELGATE \r\n" + 1, 'x');
        for (std::size_t at; (at = text->find('X')) != text->npos;)
            text->replace(at, 1, most);
    }
    const GatewayOptions options{password, fault == "refuse" ? GatewayFault::kRefuse
                                           : fault == "drop" ? GatewayFault::kDrop
                                           : fault == "hang" ? GatewayFault::kHang
                                                             : GatewayFault::kNone};
    const auto replyOf = [](const Gateway::Reply& reply) {
        const char* then[] = {"wait", "pass on", "close"};
        return reply.answer + then[static_cast<int>(reply.then)] + "|" + reply.passedOn;
    };
    const std::string atOnce = replyOf(Gateway(options).feed(bytes));
    Gateway slow(options);
    Gateway::Reply reply;
    for (const char byte : bytes) {
        if (reply.then == Gateway::Then::kPassOn) reply.passedOn += byte;
        if (reply.then == Gateway::Then::kWait) reply = slow.feed({&byte, 1});
    }
    return atOnce + (replyOf(reply) == atOnce ? "" : ", byte by byte " + replyOf(reply));
});

}  // namespace
}  // namespace kel::bench
