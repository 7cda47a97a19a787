#pragma once
// What keldesk remembers for the user, under a key of its own.

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "hosts/shared/model/target.h"

namespace kel::keldesk {

// Reading what is not there, or is something else, gives nothing. Failures of writing are thrown as
// com::Error.
std::vector<std::wstring> readRecentScripts();
void writeRecentScripts(const std::vector<std::wstring>& paths);

host::Target readTarget();
void writeTarget(const host::Target& target);

std::string readLook();
void writeLook(const std::string& look);

}  // namespace kel::keldesk
