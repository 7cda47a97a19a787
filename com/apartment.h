#pragma once
// The thread's part in COM.

#include <windows.h>

#include <objbase.h>

#include "com/error.h"

namespace kel::com {

// Puts the thread into a single-threaded apartment for as long as it lives. Throws Error.
class Apartment {
public:
    Apartment() { check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

}  // namespace kel::com
