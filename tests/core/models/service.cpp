// What the dialogs that service an instrument decide.
#include "dialogs/service/model/compass_scores.h"
#include "dialogs/service/model/firmware_file.h"
#include "dialogs/service/model/pressure_offset.h"
#include "dialogs/service/model/recorder_texts.h"
#include "dialogs/service/model/silence.h"
#include "dialogs/service/model/transfer_progress.h"
#include "tests/core/models/subject.h"

namespace kel::service {
namespace {

using test::narrow;
using test::Subject;
using test::Words;

const Subject kFirmware("firmware file", [](Words& words) {
    const std::wstring path = words.wide();
    return narrow(firmwareName(path)) + (isFirmwarePackage(path) ? ", package" : "") + ", '" +
           narrow(firmwareCompanion(path)) + "'";
});

const Subject kAccessCode("access code", [](Words& words) {
    const auto code = parseAccessCode(words.wide());
    return code ? std::to_string(*code) : "none";
});

// "at milliseconds done total", or what is begun, told, refused or left.
const Subject kProgress("progress of a transfer", [] {
    return [progress = TransferProgress()](Words& words) mutable {
        const std::string act = words.text();
        if (act == "begin") progress.begin(words.wide());
        if (act == "tell") progress.tell(words.wide());
        if (act == "refuse") progress.refuse(words.wide());
        if (act == "last") return narrow(progress.lastLine(words.wide()));
        if (act == "at") {
            const std::chrono::milliseconds time(words.number());
            const auto done = words.number<std::int64_t>();
            progress.advance(done, words.number<std::int64_t>(), time);
        }
        return std::to_string(progress.position()) + " " + narrow(progress.line());
    };
});

const Subject kScores("compass scores", [](Words& words) {
    const long horizontal = words.number<long>();
    const long vertical = words.number<long>();
    const auto texts = scoreTexts(acceptedScores(horizontal, vertical, words.number<double>()));
    return texts[0] + ", " + texts[1] + ", " + texts[2];
});

const Subject kAllScores("shown compass scores", [](Words& words) {
    return shownScores({words.text(), words.text(), words.text()});
});

const Subject kField("magnetic field", [](Words& words) {
    const int index = fieldIndex(words.number<double>());
    return std::to_string(std::max(index, -1)) + " " + rating(index);
});

const Subject kPressure("shown pressure", [](Words& words) {
    const auto decibars = words.number<double>();
    return shownPressure(decibars, words.text() == "metric");
});

const Subject kCommand("command for the offset", [](Words& words) {
    const auto present = words.number<double>();
    return offsetCommand(present, words.number<double>());
});

const Subject kRemaining("remaining time of the recorder", [](Words& words) {
    const auto elapsed = words.number<std::uint32_t>();
    const auto done = words.number<std::uint32_t>();
    return narrow(remainingTimeText(elapsed, done, words.number<std::uint32_t>()));
});

const Subject kListing("listing of the recorder", [](Words& words) {
    const auto elapsed = words.number<std::uint32_t>(), listed = words.number<std::uint32_t>();
    return narrow(listingText(elapsed, listed, words.number<std::uint32_t>()));
});

const Subject kDone("time of the recorder",
                    [](Words& words) { return narrow(doneText(words.number<std::uint32_t>())); });

const Subject kFileTime("time of a file", [](Words& words) {
    const int year = words.number(), month = words.number(), day = words.number();
    const int hour = words.number();
    return narrow(fileDateText(year, month, day) + L" " + fileTimeText(hour, words.number()));
});

// At each of the times something comes; at the last one it is asked.
const Subject kSilence("silence", [](Words& words) {
    Silence silence(words.number<std::uint64_t>());
    const auto times = words.all();
    for (std::size_t i = 0; i + 1 < times.size(); ++i)
        silence.heard(std::stoull(times[i]));
    return silence.isSilent(std::stoull(times.back())) ? "silent" : "heard";
});

const Subject kFolder("folder", [](Words& words) { return narrow(asFolder(words.wide())); });

}  // namespace
}  // namespace kel::service
