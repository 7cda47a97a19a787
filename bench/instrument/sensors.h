#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "bench/instrument/line_output.h"

namespace kel::bench {

struct Reading {
    double pressure = 0;  // dbar, offset applied
    double heading = 0;   // degrees, declination applied
    double pitch = 0;     // degrees
    double roll = 0;      // degrees
};

// How the sensors behave while a service looks at them.
struct SensorOptions {
    double pressureRamp = 0;      // dbar a second, from the start of a collection
    double pressureNoise = 0.05;  // dbar, from the lowest to the highest
    std::uint32_t seed = 1;       // of the noise
    bool compass = true;          // false: there is none
};

// A collection of pressures and a calibration of the compass, one of them at a time. Each sample is
// a line.
class Sensors {
public:
    explicit Sensors(const SensorOptions& options) : options_(options) {}

    static constexpr Duration kPressureInterval = std::chrono::milliseconds{250};
    static constexpr Duration kCompassInterval = std::chrono::milliseconds{200};

    bool hasCompass() const { return options_.compass; }

    // The first sample of both is due an interval after the start.
    void start(Duration now) { start_ = now; }
    std::string pressure(const Reading& reading, Duration now) const;
    // Turns once a minute and swings in pitch and roll.
    std::string attitude(const Reading& reading, Duration now) const;

    // Ends a calibration, from whose length its scores follow: one point more for every 15 seconds
    // in the horizontal, for every 20 in the vertical.
    void endCalibration(Duration now);

    struct Scores {
        int horizontal;
        int vertical;
        double field;
    };
    // Of the last calibration; nothing before the first one.
    std::optional<Scores> scores() const { return scores_; }

private:
    double noise(Duration now) const;

    SensorOptions options_;
    Duration start_{0};
    std::optional<Scores> scores_;
};

}  // namespace kel::bench
