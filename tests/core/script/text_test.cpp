#include <gtest/gtest.h>

#include "script/engine/locator.h"
#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

TEST(ScriptText, LinesAreCutStrippedAndSent) {
    expectRuns({
        {"", ""},
        {"// only\r\n\r\n \t // comments\n//\n", ""},
        {"a\r\n\r\n\nb\rc", "> a\n> b\n> c\n"},
        {"\n   \n\t\r\n", "> \n> \n"},
        {" \t a b \v // c", "> a b\n"},
        {"a / b\n/c/", "> a / b\n> /c/\n"},
        {"say \"http://x\"", "> say \"http:\n"},
        {std::string("a\0b%x", 5), "! Variable not found: x\n", false},
        {std::string(" \0 ", 3), std::string("> \0\n", 4)},
    });
}

TEST(ScriptText, ReferencesAreReplacedOutsideQuotes) {
    const std::string longName(128, 'n');
    expectRuns({
        {"@depth=7\nat %depth. %DEPTH%depth", "> at 7. 77\n"},
        {"@d=7\n\"%d ##d\" %d \"%d", "> \"%d ##d\" 7 \"%d\n"},
        {"@d=\"\"\n[%d]\n%d", "> []\n> \n"},
        {"@d=7\na#%d#", "> a#7#\n"},
        {"a\n%b\nc", "> a\n! Variable not found: b\n", false},
        {"50% off", "! Variable not found: \n", false},
        {"@=1\n%-", "> 1-\n"},
        {"@" + longName + "=1\n%" + longName + ".", "> 1.\n"},
        {"a\nb %x" + longName + " c", "! Too long variable name: x" + longName + " c\n", false},
        {"@" + longName + "n=1\n##" + longName + "n", "> 1\n"},
    });
}

TEST(ScriptText, InlineExpressionsEndWhereTheirCallEnds) {
    expectRuns({
        {"##join(1)x ##join(2, \"b\") y", "join0(1)\njoin0(2|b)\n> 1x 2|b y\n"},
        {"a ##b=5\n%b", "> a 5\n> 5\n"},
        {"a##b=join(5)c%b", "join0(5)\n> a5c5\n"},
        {"@d=1\nx##d", "> x1\n"},
        {"a##", "> a\n"},
        {"a###b", "! Invalid expression '#b'\n", false},
        {"a\n##b c", "! Invalid expression 'b c'\n", false},
    });
}

// A lead byte makes the next byte part of its character; letters are the host's.
class DoubleByteRules : public TextRules {
public:
    bool isLeadByte(unsigned char byte) const override { return byte == 0x81; }
    bool isLetter(unsigned char byte) const override {
        return byte == 0xE6 || byte == 0xC6 || TextRules::isLetter(byte);
    }
    std::string fold(std::string_view text) const override {
        std::string folded = TextRules::fold(text);
        for (char& c : folded) {
            if (c == '\xC6') c = '\xE6';
        }
        return folded;
    }
};

TEST(ScriptText, CodePageIsTheHosts) {
    const DoubleByteRules rules;
    ScriptBench bench(rules);
    EXPECT_TRUE(
        bench.session.run("a\x81  \n\x81// \n\x81\n"
                          "@\xE6=\"b\"\n%\xC6\x82\n#IF '\xC6' == \"\xE6\"\nsame\n#ENDIF"));
    EXPECT_EQ(bench.transcript, "> a\x81 \n> \x81//\n> \x81\n> b\x82\n> same\n");
}

TEST(VariableStore, KeepsOrderAndFirstSpelling) {
    const TextRules rules;
    VariableStore variables(rules);
    variables.set("Mode", "a");
    variables.set("depth", "1");
    variables.set("MODE", "");
    ASSERT_EQ(variables.size(), 2u);
    EXPECT_EQ(variables[0].name, "Mode");
    ASSERT_NE(variables.find("mode"), nullptr);
    EXPECT_EQ(*variables.find("mode"), "");
    EXPECT_EQ(variables.find("mod"), nullptr);
    variables.clear();
    EXPECT_EQ(variables.find("depth"), nullptr);
}

TEST(Locator, CountsEveryKindOfLineEndForwardsAndBackwards) {
    const std::string_view text = "a\r\nbc\rd\n\n\re";
    Locator locator(text);
    const auto at = [&](std::size_t offset) {
        const Position position = locator.locate(text.data() + offset);
        return std::to_string(position.line) + ":" + std::to_string(position.column);
    };
    EXPECT_EQ(at(0), "1:1");
    EXPECT_EQ(at(4), "2:2");
    EXPECT_EQ(at(3), "2:1");
    EXPECT_EQ(at(6), "3:1");
    EXPECT_EQ(at(11), "6:2");
    EXPECT_EQ(at(0), "1:1");
    EXPECT_EQ(at(10), "6:1");
}

}  // namespace
}  // namespace kel::script
