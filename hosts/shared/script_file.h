#pragma once
// The script to run, from its file.

#include <string>
#include <string_view>

namespace kel::host {

struct ScriptFile {
    std::string name;     // without its folder; UTF-8
    std::wstring folder;  // full path, without a separator at its end unless it is a root
    std::wstring text;
};

// Reads a file in UTF-8, UTF-16 (with a byte-order mark) or the user's code page. `path` is UTF-8.
// Throws Failure (unreadable file).
ScriptFile readScript(const std::string& path);

// True when nothing of the text is lost in the user's code page, in which scripts run.
bool fitsCodePage(std::wstring_view text);

}  // namespace kel::host
