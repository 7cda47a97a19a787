#pragma once
// From the bytes of a script file to its text.

#include <optional>
#include <string>
#include <string_view>

namespace kel::kelrun {

// Reads UTF-8 and UTF-16 after a byte-order mark, and UTF-8 without one. Nothing when the bytes
// have no mark and are not UTF-8: then they are in the user's code page. Line ends stay as they
// are. Throws std::invalid_argument, with the reason, when the bytes are no text.
std::optional<std::u16string> decodeScript(std::string_view bytes);

}  // namespace kel::kelrun
