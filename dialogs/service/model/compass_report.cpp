#include "dialogs/service/model/compass_report.h"

#include <initializer_list>
#include <utility>

namespace kel::service {
namespace {

void addRow(html::HTMLStream& stream, const char* cell, std::initializer_list<const char*> texts) {
    stream.OpenTag("TR");
    for (const char* text : texts)
        stream.WriteElement(cell, text);
    stream.CloseTag();
}

}  // namespace

void CompassReport::open(const std::filesystem::path& path) {
    if (!stream_.Open(path)) return;
    stream_.BeginDocument("Compass Calibration Report");
    stream_.OpenTag("BODY");
}

void CompassReport::beginCalibration() {
    // The compass may have ended the former one by itself.
    endCalibration();
    stream_.WriteLine("<H1>Compass calibration report</H1>");
    stream_.OpenTag("TABLE");
    addRow(stream_, "TH", {"Heading", "Pitch", "Roll"});
    isCalibrating_ = true;
}

void CompassReport::addReading(const ReadingTexts& reading) {
    if (!isCalibrating_) return;
    addRow(stream_, "TD", {reading[0].c_str(), reading[1].c_str(), reading[2].c_str()});
}

void CompassReport::endCalibration() {
    if (std::exchange(isCalibrating_, false)) stream_.CloseTag();
}

void CompassReport::addParagraph(const std::string& text) {
    stream_.WriteLine("<P>" + text + "</P>");
}

void CompassReport::addScores(const ScoreTexts& scores) {
    stream_.WriteLine("<H3>Score</H3>");
    stream_.OpenTag("TABLE");
    addRow(stream_, "TD", {"Horizontal calibration score (0-9)", scores[0].c_str()});
    addRow(stream_, "TD", {"Vertical calibration score (0-9)", scores[1].c_str()});
    addRow(stream_, "TD", {"Ambient magnetic field strength (0-100)", scores[2].c_str()});
    stream_.CloseTag();
    stream_.WriteLine("<P></P>");
}

}  // namespace kel::service
