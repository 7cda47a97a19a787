#pragma once
// Names of files that somebody else chose.

#include <string_view>

namespace kel::bench {

// True for a name under which a file can be made in a folder, and nowhere but there: no path, no
// drive, no stream, no device. In the user's code page.
bool isFileName(std::string_view name);

}  // namespace kel::bench
