#pragma once
// Between UTF-8, which is used inside, and UTF-16, which the platform and some files use.

#include <optional>
#include <string>
#include <string_view>

namespace kel::kelrun {

// Stands for what is no character.
inline constexpr char16_t kReplacementCharacter = 0xFFFD;

// Half of a pair without its other half becomes the replacement character.
std::string toUtf8(std::u16string_view text);

// Nothing when the text is not valid UTF-8.
std::optional<std::u16string> toUtf16(std::string_view text);

}  // namespace kel::kelrun
