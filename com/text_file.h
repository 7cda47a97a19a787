#pragma once
// From the bytes of a file that people write to its text.

#include <string>
#include <string_view>

namespace kel::com {

// Reads UTF-8 and UTF-16 after a byte-order mark, UTF-8 without one, and else the user's code page.
// Line ends stay as they are. Throws std::invalid_argument, with the reason in words that follow
// the name of the file ("is no text"), when the bytes are no text.
std::wstring decodeTextFile(std::string_view bytes);

}  // namespace kel::com
