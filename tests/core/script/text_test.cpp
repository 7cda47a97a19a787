#include <gtest/gtest.h>

#include <stdexcept>

#include "script/engine/locator.h"
#include "tests/core/script/script_bench.h"

namespace kel::script {
namespace {

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
        bench.session.run("a\x81  \n\x81// \n\x81\n \tx // gone\n // gone\n \n"
                          "@\xE6=\"b\"\n%\xC6\x82\n#IF '\xC6' == \"\xE6\"\nsame\n#ENDIF"));
    EXPECT_EQ(bench.transcript,
              "\"a\x81 \"\n\"\x81//\"\n\"\x81\"\n\"x\"\n\"\"\n\"b\x82\"\n\"same\"\n");
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

TEST(VariableStore, IsUnchangedWhenAVariableCannotBeAdded) {
    struct OneName : TextRules {
        std::string fold(std::string_view) const override { return "x"; }
    };
    const OneName rules;
    VariableStore variables(rules);
    EXPECT_THROW(variables.set(std::string_view("x", SIZE_MAX), "1"), std::length_error);
    EXPECT_EQ(variables.find("x"), nullptr);
}

TEST(Locator, CountsEveryKindOfLineEndForwardsAndBackwards) {
    const std::string_view text = "a\r\nbc\rd\n\n\re\r";
    Locator locator(text);
    const auto at = [&](std::size_t offset) {
        const Position position = locator.locate(text.data() + offset);
        return std::to_string(position.line) + ":" + std::to_string(position.column);
    };
    const std::pair<std::size_t, const char*> places[] = {{0, "1:1"},  {4, "2:2"},  {3, "2:1"},
                                                          {6, "3:1"},  {11, "6:2"}, {0, "1:1"},
                                                          {10, "6:1"}, {12, "7:1"}};
    for (const auto& [offset, place] : places)
        EXPECT_EQ(at(offset), place) << offset;
}

}  // namespace
}  // namespace kel::script
