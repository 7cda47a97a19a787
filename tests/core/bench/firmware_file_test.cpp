#include "bench/link/model/firmware_file.h"

#include <gtest/gtest.h>

#include "bench/checksum.h"

namespace kel::bench {
namespace {

constexpr std::string_view kMark("KELFWPK1");

// The image as "address:bytes ...", or what is wrong.
template <class Reader>
std::string shownImage(Reader&& reader, std::string_view file) {
    try {
        std::string shown;
        for (const auto& [address, bytes] : reader(file))
            shown += hexadecimal(address, 8) + ":" + bytes + " ";
        return shown;
    } catch (const FirmwareFileError& error) {
        return error.what();
    }
}

TEST(FirmwareFile, IntelHexIsReadWithAllItsRecords) {
    const struct {
        std::string_view file, expected;
    } rows[] = {
        {":0300300002337A1E\r\n:00000001FF\r\n", "00000030:\x02\x33\x7A "},
        {":020000004b656e\n:0100020061bc\n\n:00000001ff", "line 1: a wrong checksum"},
        {":020000004b654E\n:01000200619C\n\n:00000001ff", "00000000:Kea "},
        {":01000200619C\n:020000004B654E\n:0100100062"
         "8D\n:00000001FF\n",
         "00000000:Kea 00000010:b "},
        {":020000021200EA\n:010004006A91\n:00000001FF\n", "00012004:j "},
        {":0400000300003800C1\n:04000005000000CD2A\n:020000040001F9\n:010004006A91\n:00000001FF\n",
         "00010004:j "},
        {":020000004B654E\n:010001006A94\n:00000001FF\n", "two values for address 00000001"},
        {":00000001FF\n", "nothing in it"},
        {"", "no end record"},
        {":0300300002337A1E\n", "no end record"},
        {":00000001FF\n:0300300002337A1E\n", "line 2: more after its end"},
        {"0300300002337A1E\n", "line 1: no colon at the beginning"},
        {":0300300002337A1\n", "line 1: an odd number of digits"},
        {":0300300002337G1E\n", "line 1: something that is no digit"},
        {":0300300002-37A1E\n", "line 1: something that is no digit"},
        {":0400300002337A1D\n", "line 1: another length than it says"},
        {":00\n", "line 1: another length than it says"},
        {":\n", "line 1: another length than it says"},
        {":00000006FA\n", "line 1: an unknown record"},
        {":0100000412E9\n", "line 1: a base that is not of two bytes"},
    };
    for (const auto& [file, expected] : rows)
        EXPECT_EQ(shownImage(readIntelHex, file), expected) << file;
}

TEST(FirmwareFile, APackageIsWholeOrRefused) {
    const std::string content = "firmware";
    std::string package(kMark);
    for (const std::uint32_t number : {0x8001u, 8u, crc32(content)}) {
        for (int shift = 0; shift < 32; shift += 8)
            package += static_cast<char>(number >> shift);
    }
    package += content;
    EXPECT_EQ(shownImage(readPackage, package), "00008001:firmware ");
    EXPECT_EQ(readAny(package), readPackage(package));
    for (std::size_t size = 0; size < package.size(); ++size)
        EXPECT_THROW(readPackage(package.substr(0, size)), FirmwareFileError) << size;
    EXPECT_EQ(shownImage(readPackage, package + "+"), "another length than it says");
    package.back() ^= 1;
    EXPECT_EQ(shownImage(readPackage, package), "a wrong checksum");

    EXPECT_EQ(shownImage(readAny, "plain"), "00000000:plain ");
    EXPECT_EQ(shownImage(readAny, ":00000001FF"), "nothing in it");
    EXPECT_EQ(shownImage(readBinary, ""), "nothing in it");
    EXPECT_EQ(shownImage(readAny, std::string(2, '\0')), "00000000:" + std::string(2, '\0') + " ");
}

}  // namespace
}  // namespace kel::bench
