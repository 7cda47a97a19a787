// What the dialogs that service an instrument decide.
#include <memory>

#include "dialogs/service/model/compass_report.h"
#include "dialogs/service/model/compass_scores.h"
#include "dialogs/service/model/firmware_file.h"
#include "dialogs/service/model/pressure_offset.h"
#include "dialogs/service/model/recorder_texts.h"
#include "dialogs/service/model/silence.h"
#include "dialogs/service/model/transfer_progress.h"
#include "tests/core/models/subject.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"

namespace kel::service {
namespace {

using test::narrow;
using test::shown;
using test::Subject;
using test::Words;

const Subject kFirmware("firmware file", [](const std::wstring& path) {
    return narrow(firmwareName(path)) + (isFirmwarePackage(path) ? ", package" : "") + ", '" +
           narrow(firmwareCompanion(path)) + "'";
});
const Subject kAccessCode("access code", parseAccessCode);

// "at milliseconds done total", or what is begun, told, refused or left.
const Subject kProgress("progress of a transfer",
                        [progress = TransferProgress()](const std::string& act,
                                                        Words& words) mutable {
                            if (act == "begin") progress.begin(words.wide());
                            if (act == "tell") progress.tell(words.wide());
                            if (act == "refuse") progress.refuse(words.wide());
                            if (act == "last") return narrow(progress.lastLine(words.wide()));
                            if (act == "at") {
                                const std::chrono::milliseconds time(words.number());
                                const auto done = words.number<std::int64_t>();
                                progress.advance(done, words.number<std::int64_t>(), time);
                            }
                            return shown(progress.position(), progress.line());
                        });

const Subject kScores("compass scores", [](long horizontal, long vertical, double field) {
    return scoreTexts(acceptedScores(horizontal, vertical, field));
});
const Subject kAllScores("shown compass scores",
                         [](std::string horizontal, std::string vertical, std::string field) {
                             return shownScores({horizontal, vertical, field});
                         });
const Subject kField("magnetic field", [](double strength) {
    const int index = fieldIndex(strength);
    return shown(std::max(index, -1), rating(index));
});

// Parts: "begin", "end", "reading HEADING PITCH ROLL", "paragraph TEXT"; with what file it is one.
const Subject kReport("report of the compass", [](const std::string& same, Words& words) {
    const test::TemporaryFile file;
    auto report = std::make_unique<CompassReport>();
    report->open(file.path());
    for (Words& part : words.parts()) {
        const std::string act = part.text();
        if (act == "begin") report->beginCalibration();
        if (act == "end") report->endCalibration();
        if (act == "reading") report->addReading({part.text(), part.text(), part.text()});
        if (act == "paragraph") report->addParagraph(part.rest());
    }
    report.reset();
    const auto folder = test::projectFile("tests/core/service/compass_reports");
    const bool isSame =
        file.bytes() == test::asTextFile(test::TemporaryFile::bytesOf(folder / same));
    return isSame ? "the same" : file.bytes();
});

const Subject kPressure("shown pressure", [](double decibars, const std::string& units) {
    return shownPressure(decibars, units == "metric");
});
const Subject kCommand("command for the offset", offsetCommand);
const Subject kRemaining("remaining time of the recorder", remainingTimeText);
const Subject kListing("listing of the recorder", listingText);
const Subject kDone("time of the recorder", doneText);
const Subject kFileTime("time of a file", [](int year, int month, int day, int hour, int minute) {
    return shown(fileDateText(year, month, day), fileTimeText(hour, minute));
});
const Subject kFolder("folder", asFolder);

// At each of the times something comes; at the last one it is asked.
const Subject kSilence("silence", [](std::uint64_t start, const std::vector<std::uint64_t>& times) {
    Silence silence(start);
    for (std::size_t i = 0; i + 1 < times.size(); ++i)
        silence.heard(times[i]);
    return silence.isSilent(times.back()) ? "silent" : "heard";
});

}  // namespace
}  // namespace kel::service
