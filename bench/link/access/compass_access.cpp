#include "bench/link/access/compass_access.h"

#include <algorithm>

#include "bench/link/access/dialogue.h"
#include "bench/link/model/answers.h"

namespace kel::bench {
namespace {

// What is no score, at either end, stays none in a type that may not hold all of it.
long scoreOf(double number) {
    return static_cast<long>(std::clamp(number, -1.0, 10.0));
}

}  // namespace

HRESULT CompassAccess::get_Present(VARIANT_BOOL* present) {
    return operation([&] { com::out(present) = com::variantBool(isPresent_); });
}

HRESULT CompassAccess::get_Calibrating(VARIANT_BOOL* calibrating) {
    return operation([&] {
        com::out(calibrating) = VARIANT_FALSE;
        if (!isTalking()) receive();
        *calibrating = com::variantBool(!isTalking() && readings_.isRunning());
    });
}

HRESULT CompassAccess::StopCalibration() {
    return operation([&] { exclusively([&] { readings_.stop(); }); });
}

HRESULT CompassAccess::get_Heading(double* degrees) {
    return give(&Attitude::heading, degrees);
}

HRESULT CompassAccess::get_Pitch(double* degrees) {
    return give(&Attitude::pitch, degrees);
}

HRESULT CompassAccess::get_Roll(double* degrees) {
    return give(&Attitude::roll, degrees);
}

HRESULT CompassAccess::Initialise(VARIANT_BOOL* result) {
    return dialogue(result, [&] {
        readings_.stop();
        isPresent_ = false;
        isPresent_ = ask("compass").starts_with("Compass: ready");
        return isPresent_;
    });
}

HRESULT CompassAccess::StartCalibration(VARIANT_BOOL* result) {
    return dialogue(result, [&] {
        readings_.stop();
        isNew_ = false;
        return readings_.start(link().Get(), "compass calibrate");
    });
}

HRESULT CompassAccess::get_Busy(VARIANT_BOOL* busy) {
    return operation([&] {
        com::out(busy) = VARIANT_TRUE;
        if (!isTalking()) receive();
        *busy = com::variantBool(!std::exchange(isNew_, false));
    });
}

HRESULT CompassAccess::ReadScores(long* horizontal, long* vertical, double* field,
                                  VARIANT_BOOL* result) {
    return dialogue(result, [&] {
        com::out(horizontal) = 0;
        com::out(vertical) = 0;
        com::out(field) = 0;
        // The instrument takes no questions while it calibrates.
        if (readings_.isRunning()) return false;
        const std::string answer = ask("compass scores");
        constexpr std::string_view kName = "Scores: ";
        if (!answer.starts_with(kName)) return false;
        const auto scores = leadingNumbers(std::string_view(answer).substr(kName.size()), 3);
        if (!scores) return false;
        *horizontal = scoreOf((*scores)[0]);
        *vertical = scoreOf((*scores)[1]);
        *field = (*scores)[2];
        return true;
    });
}

std::string CompassAccess::ask(std::string_view command) {
    QuietPort port(link().Get(), home());
    return Dialogue(port).ask(command);
}

void CompassAccess::receive() {
    for (const std::string& line : readings_.take()) {
        const auto angles = leadingNumbers(line, 3);
        if (!angles) continue;
        attitude_ = {(*angles)[0], (*angles)[1], (*angles)[2]};
        isNew_ = true;
    }
}

HRESULT CompassAccess::give(double Attitude::*angle, double* degrees) {
    return operation([&] { com::out(degrees) = attitude_.*angle; });
}

}  // namespace kel::bench
