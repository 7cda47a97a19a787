#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kel::bench {

// Blanks and tabs at both ends removed.
std::string_view trim(std::string_view text);

// The text up to the first blank or tab; the rest without leading blanks stays in `text`.
std::string_view takeWord(std::string_view& text);

// ASCII letters only, so that a command means the same in every locale.
bool equalIgnoringCase(std::string_view left, std::string_view right);

// The whole text as a finite decimal number, whatever the locale; nothing when it is anything else.
std::optional<double> parseNumber(std::string_view text);

// With a fixed number of decimals and a full stop, whatever the locale.
std::string formatNumber(double value, int decimals);

// "YYYY/MM/DD HH:MM:SS"; nothing for another form or a date that does not exist.
std::optional<std::chrono::local_seconds> parseMoment(std::string_view text);
std::string formatMoment(std::chrono::local_seconds moment);

}  // namespace kel::bench
