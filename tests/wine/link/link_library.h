#pragma once
// The library under test, reached as a host without a registry would reach it.

#include <gtest/gtest.h>
#include <winsock2.h>

#include <string>

#include "com/error.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "interfaces/link_classes.h"

namespace kel::bench::test {

using com::Bstr;
using com::ComPtr;

// The communicator's class, which the link itself chooses.
inline constexpr CLSID kCommunicatorClass = {
    0x4D0F6B1C, 0x92E7, 0x4A53, {0xB8, 0x1E, 0x63, 0xC5, 0x0A, 0x7D, 0xF2, 0x98}};

std::wstring libraryPath();

// The result of one of the entry points that have no parameters.
HRESULT callLibrary(const char* entryPoint);

ComPtr<IUnknown> createObject(const CLSID& identifier);

template <class Interface>
ComPtr<Interface> create(const CLSID& identifier) {
    ComPtr<Interface> object;
    EXPECT_EQ(createObject(identifier).As(&object), S_OK);
    return object;
}

// Objects made while it lives measure time so many times faster.
class TimeScale {
public:
    explicit TimeScale(const wchar_t* factor) {
        SetEnvironmentVariableW(L"KEL_BENCH_TIME_SCALE", factor);
    }
    ~TimeScale() { SetEnvironmentVariableW(L"KEL_BENCH_TIME_SCALE", nullptr); }
};

// The description of the failure that was published last.
std::wstring publishedError();

inline std::string text(const Bstr& value) {
    return com::narrow(value.view());
}

// Every test must leave no object of the library behind.
class LinkTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(callLibrary("DllCanUnloadNow"), S_OK) << "objects leak"; }
};

}  // namespace kel::bench::test
