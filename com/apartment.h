#pragma once
// The thread's part in COM.

#include <windows.h>

#include <objbase.h>

#include "com/error.h"

namespace kel::com {

// Puts the thread into an apartment for as long as it lives, its own one by default. Throws Error.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) {
        check(CoInitializeEx(nullptr, kind));
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() { CoUninitialize(); }
};

}  // namespace kel::com
