// The function that libFuzzer calls; the build names the target.
#include <cstdint>

#include "tests/fuzz/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kel::fuzz::KEL_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
