#include "bench/link/model/firmware_file.h"

#include <algorithm>
#include <numeric>

#include "bench/checksum.h"
#include "bench/link/model/answers.h"

namespace kel::bench {
namespace {

constexpr std::string_view kPackageMark = "KELFWPK1";
constexpr std::size_t kPackageHeader = 20;

enum RecordType { kData, kEnd, kSegmentBase, kSegmentStart, kLinearBase, kLinearStart };

struct Record {
    std::uint32_t address;
    unsigned type;
    std::string_view data;
};

unsigned byteAt(std::string_view bytes, std::size_t place) {
    return static_cast<unsigned char>(bytes[place]);
}

std::string bytesOfDigits(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const auto byte = wholeNumber(digits.substr(i, 2), 16);
        // A sign counts as a digit there.
        if (!byte || digits[i] == '-') throw FirmwareFileError("something that is no digit");
        bytes += static_cast<char>(*byte);
    }
    if (digits.size() % 2 != 0) throw FirmwareFileError("an odd number of digits");
    return bytes;
}

// `bytes` are those of the line, and have to live as long as the record.
Record recordOf(std::string_view bytes) {
    if (bytes.size() < 5 || bytes.size() != byteAt(bytes, 0) + 5u) {
        throw FirmwareFileError("another length than it says");
    }
    unsigned sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        sum += byteAt(bytes, i);
    if (sum % 256 != 0) throw FirmwareFileError("a wrong checksum");
    return {byteAt(bytes, 1) << 8 | byteAt(bytes, 2), byteAt(bytes, 3),
            bytes.substr(4, bytes.size() - 5)};
}

std::uint32_t baseOf(const Record& record) {
    if (record.data.size() != 2) throw FirmwareFileError("a base that is not of two bytes");
    const std::uint32_t value = byteAt(record.data, 0) << 8 | byteAt(record.data, 1);
    return record.type == kLinearBase ? value << 16 : value << 4;
}

// Sorts segments and joins those that touch.
FirmwareImage joined(FirmwareImage pieces) {
    std::stable_sort(pieces.begin(), pieces.end(),
                     [](const auto& a, const auto& b) { return a.address < b.address; });
    FirmwareImage image;
    for (FirmwareSegment& piece : pieces) {
        if (piece.bytes.empty()) continue;
        const std::uint64_t end =
            image.empty() ? 0 : std::uint64_t{image.back().address} + image.back().bytes.size();
        if (!image.empty() && piece.address < end) {
            throw FirmwareFileError("two values for address " + hexadecimal(piece.address, 8));
        }
        if (!image.empty() && piece.address == end) {
            image.back().bytes += piece.bytes;
        } else {
            image.push_back(std::move(piece));
        }
    }
    if (image.empty()) throw FirmwareFileError("nothing in it");
    return image;
}

}  // namespace

std::size_t sizeOf(const FirmwareImage& image) {
    return std::accumulate(
        image.begin(), image.end(), std::size_t{0},
        [](std::size_t sum, const FirmwareSegment& segment) { return sum + segment.bytes.size(); });
}

FirmwareImage readIntelHex(std::string_view text) {
    FirmwareImage pieces;
    std::uint32_t base = 0;
    bool hasEnded = false;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty()) continue;
        try {
            if (hasEnded) throw FirmwareFileError("more after its end");
            if (line[0] != ':') throw FirmwareFileError("no colon at the beginning");
            const std::string bytes = bytesOfDigits(line.substr(1));
            const Record record = recordOf(bytes);
            switch (record.type) {
                case kData:
                    pieces.push_back({base + record.address, std::string(record.data)});
                    break;
                case kEnd:
                    hasEnded = true;
                    break;
                case kSegmentBase:
                case kLinearBase:
                    base = baseOf(record);
                    break;
                case kSegmentStart:
                case kLinearStart:
                    break;
                default:
                    throw FirmwareFileError("an unknown record");
            }
        } catch (const FirmwareFileError& error) {
            throw FirmwareFileError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (!hasEnded) throw FirmwareFileError("no end record");
    return joined(std::move(pieces));
}

FirmwareImage readBinary(std::string_view bytes) {
    return joined({{0, std::string(bytes)}});
}

FirmwareImage readPackage(std::string_view bytes) {
    if (!bytes.starts_with(kPackageMark)) throw FirmwareFileError("no package");
    if (bytes.size() < kPackageHeader) throw FirmwareFileError("its end is missing");
    const auto number = [&](std::size_t place) {
        return byteAt(bytes, place) | byteAt(bytes, place + 1) << 8 |
               byteAt(bytes, place + 2) << 16 | byteAt(bytes, place + 3) << 24;
    };
    const std::string_view content = bytes.substr(kPackageHeader);
    if (content.size() != number(12)) throw FirmwareFileError("another length than it says");
    if (crc32(content) != number(16)) throw FirmwareFileError("a wrong checksum");
    return joined({{number(8), std::string(content)}});
}

FirmwareImage readAny(std::string_view bytes) {
    if (bytes.starts_with(kPackageMark)) return readPackage(bytes);
    if (bytes.starts_with(':')) return readIntelHex(bytes);
    return readBinary(bytes);
}

}  // namespace kel::bench
