#pragma once
// The scores of a compass calibration and what they are called.

#include <array>
#include <string>

namespace kel::service {

struct CompassScores {
    // From 0, very poor, to 9.
    int horizontal = 0;
    int vertical = 0;
    // From 0, the best, to 100.
    double field = 0;
};

// The scores as the compass tells them; one outside its range counts as 0.
CompassScores acceptedScores(long horizontal, long vertical, double field);

// Where a field strength stands among the ratings; below 0 when it is stronger than any.
int fieldIndex(double field);

// The word for a score; for one below 0 the worst.
const char* rating(int index);

// Each score with its rating: horizontal, vertical, field.
using ScoreTexts = std::array<std::string, 3>;
ScoreTexts scoreTexts(const CompassScores& scores);

// All three as the dialog shows them.
std::string shownScores(const ScoreTexts& texts);

}  // namespace kel::service
