#include "bench/link/clock.h"

#include <windows.h>

#include <cmath>
#include <cwchar>

namespace kel::bench {
namespace {

using RealMilliseconds = std::chrono::duration<double, std::milli>;

double scaleOfEnvironment() {
    wchar_t text[32];
    constexpr DWORD kSize = sizeof text / sizeof text[0];
    const DWORD length = GetEnvironmentVariableW(L"KEL_BENCH_TIME_SCALE", text, kSize);
    if (length == 0 || length >= kSize) return 1;

    wchar_t* end = nullptr;
    const double scale = std::wcstod(text, &end);
    return *end == L'\0' && std::isfinite(scale) && scale > 0 ? scale : 1;
}

}  // namespace

Clock::Clock() : scale_(scaleOfEnvironment()) {}

Clock::Moment Clock::after(long milliseconds) const {
    // A slowed-down clock must not run past the end of time.
    constexpr double kMost = 1e12;
    const RealMilliseconds duration(std::fmin(milliseconds / scale_, kMost));
    return std::chrono::steady_clock::now() +
           std::chrono::duration_cast<std::chrono::steady_clock::duration>(duration);
}

long Clock::until(Moment moment) const {
    const RealMilliseconds left = moment - std::chrono::steady_clock::now();
    return left.count() <= 0 ? 0 : static_cast<long>(std::ceil(left.count() * scale_));
}

}  // namespace kel::bench
