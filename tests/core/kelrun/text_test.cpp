#include <gtest/gtest.h>

#include <string>

#include "hosts/kelrun/model/dialogue_text.h"

namespace kel::kelrun {
namespace {

TEST(KelrunDialogueText, MakesEveryLineEndOneLineFeed) {
    const struct {
        std::u16string_view text;
        const char* readable;
    } cases[] = {
        {u"ver\r\nKI-1\r\n\r\n>", "ver\nKI-1\n\n>"},
        {u"a\nb\n\nc", "a\nb\n\nc"},
        {u"a\rb\r\r\nc", "a\nb\nc"},
        {u"\t\x1B[2J\x07\x7F\x85", "\t\u241B[2J\u2407\u2421\uFFFD"},
        {u"21.5 \u00B0C", "21.5 \u00B0C"},
    };
    for (const auto& row : cases) {
        DialogueText whole;
        EXPECT_EQ(whole.next(row.text), row.readable);
        // However the text is cut, the result is the same.
        DialogueText pieces;
        std::string joined;
        for (const char16_t character : row.text)
            joined += pieces.next({&character, 1});
        EXPECT_EQ(joined, row.readable);
        EXPECT_EQ(pieces.atLineStart(), joined.ends_with('\n'));
    }
    EXPECT_TRUE(DialogueText().atLineStart());
}

TEST(KelrunErrorLines, LetOnlyErrorsThrough) {
    ErrorLines lines;
    EXPECT_EQ(lines.next("ver\nKI-1\n>ERR"), "");
    EXPECT_EQ(lines.next("OR: in the middle\nERROR: Unknown"), "");
    EXPECT_EQ(lines.next(" function: f\n>"), "ERROR: Unknown function: f\n");
    EXPECT_EQ(lines.finish(), "");
    EXPECT_EQ(lines.next("ERROR: at the end"), "");
    EXPECT_EQ(lines.finish(), "ERROR: at the end\n");
    EXPECT_EQ(lines.finish(), "");
}

}  // namespace
}  // namespace kel::kelrun
