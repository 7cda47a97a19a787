#include "dialogs/service/model/compass_scores.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "ui/model/formats.h"

namespace kel::service {
namespace {

constexpr const char* kRatings[] = {"VERY POOR", "VERY POOR", "VERY POOR", "POOR", "POOR",
                                    "POOR",      "FAIR",      "FAIR",      "GOOD", "EXCELLENT"};
constexpr int kBest = static_cast<int>(std::size(kRatings)) - 1;

int acceptedScore(long score) {
    return score < 0 || score > kBest ? 0 : static_cast<int>(score);
}

std::string withRating(const std::string& value, int index) {
    return value + " (" + rating(index) + ")";
}

}  // namespace

CompassScores acceptedScores(long horizontal, long vertical, double field) {
    return {acceptedScore(horizontal), acceptedScore(vertical), field};
}

int fieldIndex(double field) {
    // Compared before it becomes an integer: not every number fits in one, and some are none.
    constexpr double kFarBelow = -1e9;
    const double index = std::trunc(10 - field * 0.1);
    if (index > kBest) return kBest;
    return static_cast<int>(index > kFarBelow ? index : kFarBelow);
}

const char* rating(int index) {
    return kRatings[std::clamp(index, 0, kBest)];
}

ScoreTexts scoreTexts(const CompassScores& scores) {
    return {withRating(std::to_string(scores.horizontal), scores.horizontal),
            withRating(std::to_string(scores.vertical), scores.vertical),
            withRating(ui::decimalText(scores.field, 2), fieldIndex(scores.field))};
}

std::string shownScores(const ScoreTexts& texts) {
    // The blanks put the values one below the other in the dialog's font.
    return "Horizontal calibration score (0-9):\t        " + texts[0] +
           "\nVertical calibration score (0-9):           " + texts[1] +
           "\nAmbient magnetic field strength (0-100): " + texts[2];
}

}  // namespace kel::service
