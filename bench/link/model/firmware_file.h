#pragma once
// What the files say that firmware comes in.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kel::bench {

// Bytes that belong together in the instrument's memory.
struct FirmwareSegment {
    std::uint32_t address;
    std::string bytes;
    bool operator==(const FirmwareSegment&) const = default;
};

// In the order of their addresses; at least one, none is empty, no two touch.
using FirmwareImage = std::vector<FirmwareSegment>;

std::size_t sizeOf(const FirmwareImage& image);

// A file that is broken; says how, and where.
class FirmwareFileError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Intel hex: all records, with their checksums and addresses of 20 and of 32 bits.
FirmwareImage readIntelHex(std::string_view text);

// The bytes as they stand, from address 0.
FirmwareImage readBinary(std::string_view bytes);

// A package: "KELFWPK1", then address, length and CRC-32 of the bytes that follow, each of them
// four bytes with the lowest first.
FirmwareImage readPackage(std::string_view bytes);

// One of the three, by how it begins.
FirmwareImage readAny(std::string_view bytes);

}  // namespace kel::bench
