#pragma once
// OLE on a thread, which libraries may expect of the programs that load them.

#include <windows.h>

#include <ole2.h>

#include "com/error.h"

namespace kel::host {

class Ole {
public:
    Ole() { com::check(OleInitialize(nullptr)); }
    ~Ole() { OleUninitialize(); }
    Ole(const Ole&) = delete;
    Ole& operator=(const Ole&) = delete;
};

}  // namespace kel::host
