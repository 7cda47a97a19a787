#pragma once
// The bench's link, as its own tests and those of the trace link use it.

#include <gtest/gtest.h>
#include <winsock2.h>

#include <string>

#include "com/error.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"
#include "tests/wine/support/library.h"

namespace kel::bench::test {

using com::Bstr;
using com::ComPtr;

// The communicator's class, which the link itself chooses.
inline constexpr CLSID kCommunicatorClass = {
    0x4D0F6B1C, 0x92E7, 0x4A53, {0xB8, 0x1E, 0x63, 0xC5, 0x0A, 0x7D, 0xF2, 0x98}};

template <class Interface>
ComPtr<Interface> create(const CLSID& identifier) {
    return kel::test::benchLink().create<Interface>(identifier);
}

// Objects made while it lives measure time so many times faster.
class TimeScale {
public:
    explicit TimeScale(const wchar_t* factor) {
        SetEnvironmentVariableW(L"KEL_BENCH_TIME_SCALE", factor);
    }
    ~TimeScale() { SetEnvironmentVariableW(L"KEL_BENCH_TIME_SCALE", nullptr); }
};

inline std::string text(const Bstr& value) {
    return com::narrow(value.view());
}

}  // namespace kel::bench::test
