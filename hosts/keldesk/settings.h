#pragma once
// What keldesk remembers for the user, under a key of its own.

#include <windows.h>

#include <string>
#include <vector>

namespace kel::keldesk {

// Reading what is not there, or is something else, gives nothing. Failures of writing are thrown as
// com::Error.
std::vector<std::wstring> readRecentScripts();
void writeRecentScripts(const std::vector<std::wstring>& paths);

std::string readLook();
void writeLook(const std::string& look);

}  // namespace kel::keldesk
