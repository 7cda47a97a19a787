#pragma once
// Script files as texts.

#include <string>

namespace kel::bench {

// The text of a file in UTF-8, UTF-16 (with a byte-order mark) or the user's code page. Line ends
// are left as they are. Throws com::Error with a text that names the file.
std::wstring readScriptFile(const std::wstring& path);

}  // namespace kel::bench
