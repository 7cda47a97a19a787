#include "bench/link/model/firmware_file.h"

#include <gtest/gtest.h>

#include "bench/checksum.h"
#include "bench/link/model/file_name.h"

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

// In the user's code page this ends with a digit, as the case files cannot.
TEST(FileName, IsNoDeviceWhateverItsDigit) {
    EXPECT_FALSE(isFileName("COM\xB9"));
}

}  // namespace
}  // namespace kel::bench
