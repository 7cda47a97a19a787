#pragma once
// What a host program asks of the new session dialog, and what comes of it.

#include <string>

namespace kel::connect {

struct SessionValues {
    std::wstring application;
    std::wstring title;       // empty for the dialog's own
    std::wstring fileName;    // the file that was opened; empty after a connection
    std::wstring fileFilter;  // empty for all files
    bool offersFiles = false;
    bool connectsAtOnce = false;
    bool offersWorkspaces = false;
    bool usesWorkspace = false;
};

}  // namespace kel::connect
