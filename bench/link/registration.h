#pragma once
// Registration of the library's classes.
//
// Where a real instrument link is installed its classes stay as they are: only a class that nobody
// serves, or that a copy of this library serves, is written. Interfaces and the type library are
// never touched, for they belong to whoever registered them first.

#include <span>

#include "com/class_table.h"

namespace kel::bench {

// Both throw com::Error.
void registerClasses(std::span<const com::ClassRow> table);

// Removes the classes that this very file serves.
void unregisterClasses(std::span<const com::ClassRow> table);

}  // namespace kel::bench
