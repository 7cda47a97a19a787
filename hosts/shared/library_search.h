#pragma once
// Where a host program takes libraries from: never from whatever folder it was started in.

#include <windows.h>

namespace kel::host {

// Takes the current folder off the places where the system looks for libraries, those of components
// included. The folders of PATH stay, for instrument links that keep their own libraries there.
// Called first of all.
void leaveOutCurrentFolder() noexcept;

// A library beside the program; stays loaded. Null, with the system's error, when it cannot be
// loaded. Throws com::Error.
HMODULE loadFromProgramFolder(const wchar_t* name);

}  // namespace kel::host
