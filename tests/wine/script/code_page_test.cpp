#include <gtest/gtest.h>

#include "script/code_page_rules.h"

namespace kel::script {
namespace {

TEST(CodePageRules, KnowDoubleByteCharacters) {
    const CodePageRules japanese(932);
    EXPECT_TRUE(japanese.isLeadByte(0x83));
    EXPECT_FALSE(japanese.isLeadByte('A'));
    EXPECT_FALSE(japanese.isLetter(0x83));
    EXPECT_TRUE(japanese.isLetter(0xB1));
    EXPECT_TRUE(japanese.isLetter('z'));
    EXPECT_FALSE(japanese.isLetter('_'));
    // The second byte looks like an upper-case letter and stays as it is.
    EXPECT_EQ(japanese.fold("\x83\x41"
                            "AB"),
              "\x83\x41"
              "ab");
}

TEST(CodePageRules, FoldLettersOfTheCodePage) {
    const CodePageRules western(1252);
    EXPECT_TRUE(western.isLetter(0xC4));
    EXPECT_FALSE(western.isLetter(0xB7));
    EXPECT_EQ(western.fold("\xC4Z"), "\xE4z");
    EXPECT_TRUE(western.equal("\xC4Z", "\xE4z"));
}

}  // namespace
}  // namespace kel::script
