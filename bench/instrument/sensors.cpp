#include "bench/instrument/sensors.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

double secondsOf(Duration duration) {
    return std::chrono::duration<double>(duration).count();
}

int score(Duration length, int secondsForAPoint) {
    return static_cast<int>(std::min(9.0, secondsOf(length) / secondsForAPoint));
}

}  // namespace

std::string Sensors::pressure(const Reading& reading, Duration now) const {
    const double ramp = options_.pressureRamp * secondsOf(now - start_);
    return formatNumber(reading.pressure + ramp + noise(now), 3) + " dbar";
}

std::string Sensors::attitude(const Reading& reading, Duration now) const {
    const double turned = 6 * secondsOf(now - start_);
    const double swing = 20 * std::sin(turned / 10);
    return formatNumber(std::fmod(reading.heading + turned, 360), 1) + " " +
           formatNumber(reading.pitch + swing, 1) + " " + formatNumber(reading.roll - swing, 1) +
           " deg";
}

void Sensors::endCalibration(Duration now) {
    const auto length = now - start_;
    scores_ = Scores{score(length, 15), score(length, 20), 12.5};
}

// The same for the same sample of every collection.
double Sensors::noise(Duration now) const {
    const auto sample = static_cast<std::uint32_t>((now - start_) / kPressureInterval);
    std::mt19937 random(options_.seed + sample);
    return options_.pressureNoise * (static_cast<double>(random()) / 4294967296.0 - 0.5);
}

}  // namespace kel::bench
