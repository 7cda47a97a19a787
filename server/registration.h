#pragma once
// Registration of the class table and the type library.

#include <windows.h>

#include <span>

#include "com/class_table.h"
#include "server/atl.h"

namespace kel::server {

// Runs every registry script in the order of the table, then registers the type library. Stops at
// the first failure and returns it.
HRESULT registerServer(AtlModule& module, std::span<const com::ClassRow> table) noexcept;

// Takes everything back. Goes on after a failure and returns the first; what is gone already is no
// failure.
HRESULT unregisterServer(AtlModule& module, std::span<const com::ClassRow> table) noexcept;

}  // namespace kel::server
