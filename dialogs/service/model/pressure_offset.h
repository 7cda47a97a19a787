#pragma once
// The pressure offset: how pressures are shown, and the commands that put a new offset.

#include <string>

namespace kel::service {

// A pressure in dbar as it is shown: in dbar, or in psi where the units are not metric.
std::string shownPressure(double decibars, bool isMetric);

// Puts the offset with which the pressures of the mean would have been measured as zero.
std::string offsetCommand(double presentOffset, double mean);

// Makes the instrument keep it.
inline constexpr char kSaveCommand[] = "savesetup";

}  // namespace kel::service
