#include "hosts/kelrun/model/diagnosis.h"

#include <gtest/gtest.h>

#include "hosts/shared/model/image.h"

namespace kel::kelrun {
namespace {

using Kind = PortState::Kind;

TEST(KelrunDiagnosis, IsShortWhenAllIsWell) {
    Diagnosis found;
    found.library.place = host::Place::kUser;
    found.library.file = "C:\\KelUtils.dll";
    found.library.image = {true, 32, "1.0.0.0"};
    found.library.contents = "18 classes";
    found.linkName = "A.Link";
    found.link.place = host::Place::kMachine;
    found.link.file = "C:\\link\x01.dll";
    found.ports = {{"COM1", Kind::kFree},
                   {"COM2", Kind::kBusy},
                   {"COM10", Kind::kFree},
                   {"COM77", Kind::kAbsent}};
    EXPECT_TRUE(isWell(found));
    EXPECT_EQ(diagnosisText(found),
              "KelUtils: registered for this user\n"
              "  C:\\KelUtils.dll, version 1.0.0.0, 32-bit\n"
              "  18 classes\n"
              "Instrument link A.Link: registered for all users\n"
              "  C:\\link␁.dll\n"
              "Serial ports: COM1, COM10 free; COM2 busy (in use by another program, or not "
              "permitted); COM77 absent\n"
              "All is well.\n");
}

TEST(KelrunDiagnosis, TellsWhatIsWrongAndEachRemedyOnce) {
    Diagnosis found;
    found.library.place = host::Place::kManifest;
    found.library.manifest = "C:\\a.manifest";
    found.library.addFault("one", "mend it");
    found.library.addFault("two", "mend it");
    found.link.notes = {"other"};
    EXPECT_FALSE(isWell(found));
    EXPECT_EQ(diagnosisText(found),
              "KelUtils: made known by C:\\a.manifest\n"
              "  WRONG: one\n  WRONG: two\n  TO DO: mend it\n"
              "Instrument link : not registered\n"
              "  note: other\n"
              "Serial ports: none\n"
              "Something is to be mended: see TO DO.\n");
    std::swap(found.library, found.link);
    EXPECT_FALSE(isWell(found));
}

TEST(ImageBits, ReadsTheMachineOfAFile) {
    const auto image = [](const char* machine, std::size_t header = 0x80) {
        std::string start = "MZ" + std::string(0x3A, '\0');
        start += static_cast<char>(header);
        start.resize(0x80, '\0');
        return start + std::string("PE\0\0", 4) + machine;
    };
    EXPECT_EQ(host::imageBits(image("\x4C\x01")), 32);
    EXPECT_EQ(host::imageBits(image("\x64\x86")), 64);
    EXPECT_EQ(host::imageBits(image("\x64\xAA")), 64);
    for (const std::string& other :
         {std::string(), std::string("MZ"), std::string("text"), image("\x01\x01"), image("L"),
          image("\x4C\x01", 0xFF), image("\x4C\x01", 0x7F), image("\x4C\x01").substr(1)})
        EXPECT_EQ(host::imageBits(other), 0);
}

}  // namespace
}  // namespace kel::kelrun
