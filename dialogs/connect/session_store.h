#pragma once
// What the new session dialog remembers for each application in the user's settings. All are silent
// about what the store refuses, as the store is.

#include <string>

#include "dialogs/connect/model/serial_ports.h"
#include "dialogs/connect/model/session_options.h"
#include "ui/model/recent_paths.h"

namespace kel::connect {

RememberedSession loadSession(const std::wstring& application);
void saveSession(const std::wstring& application, SessionOption option);

struct RememberedPort {
    std::wstring name;  // empty for none
    long rate = kDefaultBaudRate;
};

RememberedPort loadPort(const std::wstring& application);
void savePort(const std::wstring& application, const RememberedPort& port);

struct RememberedFiles {
    ui::RecentPaths recent;
    bool usesWorkspaces = false;
};

// `usesWorkspaces` where nothing is remembered of it.
RememberedFiles loadFiles(const std::wstring& application, bool usesWorkspaces);
void saveFiles(const std::wstring& application, const RememberedFiles& files);

}  // namespace kel::connect
