#pragma once
// Texts of others, made harmless for a terminal.

#include <string>
#include <string_view>

namespace kel::host {

// A visible sign in place of a control character; a tab and all others stay as they are.
char16_t visible(char16_t character);

// The text with its control characters, line ends included, as visible signs. In and out: UTF-8.
std::string oneLine(std::string_view text);

}  // namespace kel::host
