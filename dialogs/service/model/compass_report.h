#pragma once
// The HTML report of compass calibrations.

#include <array>
#include <filesystem>
#include <string>

#include "dialogs/service/model/compass_scores.h"
#include "html/html_stream.h"

namespace kel::service {

// Heading, pitch and roll, as they are shown.
using ReadingTexts = std::array<std::string, 3>;

// Until it has been opened, and where its file cannot be written, everything goes nowhere.
class CompassReport {
public:
    void open(const std::filesystem::path& path);

    // A calibration: a table of readings.
    void beginCalibration();
    // Outside of a calibration nothing is written: a reading may come in late.
    void addReading(const ReadingTexts& reading);
    void endCalibration();

    // What is to be told, as a paragraph.
    void addParagraph(const std::string& text);
    void addScores(const ScoreTexts& scores);

private:
    html::HTMLStream stream_;
    bool isCalibrating_ = false;
};

}  // namespace kel::service
