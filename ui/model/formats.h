#pragma once
// Numbers as dialogs show them. With a decimal point, whatever the locale of the process.

#include <cstdint>
#include <string>

namespace kel::ui {

// Fixed notation, such as "14.5"; filled with blanks on the left up to `width` characters.
std::string decimalText(double value, int decimals, int width = 0);

// A count of bytes in its largest unit: "1023 b", " 1.0 kB", "1.00 MB", "4.00 GB".
std::string sizeText(std::int64_t bytes);

// Pressures are measured in decibar; what a dialog shows in psi is converted for the display only.
inline constexpr double kPsiPerDecibar = 1.450377;

}  // namespace kel::ui
