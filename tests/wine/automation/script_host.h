#pragma once
// The script host of the platform, and a user for the windows that scripts open.

#include <deque>
#include <string>

namespace kel::test {

// Runs a script and gives what it prints. The windows, "caption" or "caption: a text seen in it",
// are awaited in turn and cancelled; it is a failure of the test when one does not come, or when
// the script does not end.
std::string runScriptHost(const std::string& script, const wchar_t* extension,
                          std::deque<std::string> windows);

}  // namespace kel::test
