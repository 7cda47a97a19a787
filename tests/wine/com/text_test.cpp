// Texts and files of text; text.txt tells how the cases are written.
#include "com/text.h"

#include <stdexcept>

#include "com/text_file.h"
#include "tests/support/table.h"

namespace kel::com {
namespace {

std::string quoted(const std::string& text) {
    return "'" + test::escaped(text) + "'\n";
}

std::string playText(std::string line) {
    const std::string word = test::takeWord(line);
    if (word == "file") {
        try {
            return quoted(narrow(decodeTextFile(line), CP_UTF8));
        } catch (const std::invalid_argument& refusal) {
            return refusal.what() + std::string("\n");
        }
    }
    const UINT codePage = std::stoul(test::takeWord(line));
    if (word == "to") return quoted(narrow(widen(line, CP_UTF8), codePage));
    const std::wstring text = widen(line, codePage);
    EXPECT_EQ(narrow(text, codePage), line);
    return quoted(narrow(text, CP_UTF8));
}

class Text : public testing::TestWithParam<test::Case> {};

TEST_P(Text, IsConvertedAsTheTableTells) {
    test::playTable(GetParam(), playText);
}

INSTANTIATE_TEST_SUITE_P(Of, Text, testing::ValuesIn(test::readCases("tests/wine/com/text.txt")),
                         testing::PrintToStringParamName());

TEST(TextTest, NeedsAllOfACharacter) {
    EXPECT_EQ(narrow(L"a\xD800", 1252), "a?");
    EXPECT_EQ(narrow(L"\xDC00z", 1252), "?z");
    EXPECT_EQ(decodeTextFile("\xB0"), widen("\xB0"));
    // A lead byte at the end has no character.
    EXPECT_EQ(widen("a\x83", 932).substr(0, 1), L"a");
}

}  // namespace
}  // namespace kel::com
