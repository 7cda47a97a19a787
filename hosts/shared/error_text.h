#pragma once
// Failures of the platform and of components, in words (UTF-8).

#include <windows.h>

#include <string>

#include "com/error.h"

namespace kel::host {

// The system's own words for an error code or HRESULT, one line; empty when it has none.
std::string systemText(DWORD code);

// A code as programmers write it, such as 0x80004005.
std::string codeText(HRESULT code);

// The name under which an interface is registered, or else its identifier.
std::string interfaceName(const IID& identifier);

// What a component says about its failure, the interface it failed on, and the code.
std::string describe(const com::Error& error);

}  // namespace kel::host
