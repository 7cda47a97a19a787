#include "hosts/shared/model/image.h"

#include <cstdint>

namespace kel::host {
namespace {

constexpr std::size_t kHeaderPlace = 0x3C;

// A number of so many bytes, the lowest first; beyond the end there are zeros.
std::uint32_t numberAt(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size && place + i < bytes.size(); ++i)
        number |= std::uint32_t{static_cast<unsigned char>(bytes[place + i])} << (8 * i);
    return number;
}

}  // namespace

int imageBits(std::string_view start) {
    if (!start.starts_with("MZ")) return 0;
    const std::size_t header = numberAt(start, kHeaderPlace, 4);
    if (header > start.size() || !start.substr(header).starts_with(std::string_view("PE\0\0", 4)))
        return 0;
    switch (numberAt(start, header + 4, 2)) {
        case 0x014C:
            return 32;
        case 0x8664:
        case 0xAA64:
            return 64;
        default:
            return 0;
    }
}

}  // namespace kel::host
