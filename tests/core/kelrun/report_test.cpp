// What kelrun tells about scripts and runs: diagnostics and transcripts.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hosts/kelrun/model/source_text.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/shared/model/diagnostic.h"

namespace kel::kelrun {
namespace {

using namespace std::string_literals;

TEST(KelrunSourceText, PutsTheCaretUnderTheCharacterOfAByte) {
    constexpr std::wstring_view kText =
        L"one\r\n\ttwo\r\x00FC\x6F22x\n\ne\x0301x\x1Bz\n\xD83C\xDF0Ax";
    const struct {
        std::size_t line;
        std::size_t column;
        const char* excerpt;
    } cases[] = {
        {1, 1, "one\n^\n"},
        {1, 3, "one\n  ^\n"},
        {1, 4, "one\n   ^\n"},
        {1, 99, "one\n   ^\n"},
        {2, 2, "\ttwo\n\t^\n"},
        {3, 2, "\u00FC\u6F22x\n ^\n"},    // where the character of two bytes begins
        {3, 3, "\u00FC\u6F22x\n ^\n"},    // inside it
        {3, 4, "\u00FC\u6F22x\n   ^\n"},  // beyond it, two columns on
        {4, 1, ""},
        {5, 3, "e\u0301x\u241Bz\n ^\n"},
        {6, 3, "\U0001F30Ax\n  ^\n"},
        {7, 1, ""},
        {0, 1, ""},
        {1, 2, "one\n ^\n"},
    };
    SourceText source(kText);
    const auto bytesOf = [](std::u16string_view character) {
        return character[0] > 0xFF ? std::size_t(character[0] == 0x0301 ? 1 : 2) : std::size_t(1);
    };
    for (const auto& row : cases) {
        EXPECT_EQ(source.excerpt(row.line, row.column, bytesOf), row.excerpt)
            << row.line << ":" << row.column;
    }
    const std::wstring longLine(501, L'x');
    EXPECT_EQ(SourceText(longLine).excerpt(1, 1, bytesOf), "");
}

TEST(KelrunDiagnostic, IsWrittenForUsersAndForEditors) {
    const Diagnostic hostile{"C:\\\"a\".kel", 12, 5, true, "a\x1B[2J\t\"\\\r\n\x7F\u00FC"};
    const Diagnostic nowhere{"b.kel", 0, 0, false, "odd"};
    EXPECT_EQ(placeAndMessage(hostile),
              "C:\\\"a\".kel:12:5: a\u241B[2J\t\"\\\u240D\u240A\u2421\u00FC");
    EXPECT_EQ(compilerText({"a", 1, 2, true, "m"}), "a:1:2: error: m");
    EXPECT_EQ(compilerText({"a", 1, 0, false, "m"}), "a:1: warning: m");
    EXPECT_EQ(compilerText(nowhere), "b.kel: warning: odd");
    EXPECT_EQ(toJson({}), "[\n]\n");
    EXPECT_EQ(toJson(std::vector{hostile, nowhere}),
              "[\n"
              R"({"file":"C:\\\"a\".kel","line":12,"column":5,"severity":"error",)"
              R"("message":"a\u001b[2J\t\"\\\r\n\u007f)"
              "\u00FC\"},\n"
              R"({"file":"b.kel","line":0,"column":0,"severity":"warning","message":"odd"})"
              "\n]\n");
}

// "kind text" of each entry; the clock stands still.
class KelrunTranscript : public testing::Test {
protected:
    std::string takeEntries() {
        std::string taken;
        taken.swap(entries_);
        return taken;
    }

    Transcript transcript{
        [] { return 7; },
        [this](std::string_view line) {
            const std::string entry(line);
            const auto kind = entry.find("kind") + 7;
            const auto end = entry.find("\",\"file");
            entries_ += entry.substr(kind, entry.find('"', kind) - kind) + " " +
                        entry.substr(entry.find("text") + 7, end - entry.find("text") - 7) + "\n";
            last_ = entry;
        },
        "a.kel", SourceText(L"ver\nset %x")};
    std::string entries_;
    std::string last_;
};

TEST_F(KelrunTranscript, TellsWhatHappensAndWhere) {
    transcript.lineStarted("a.kel", 2);
    EXPECT_EQ(last_,
              "{\"ms\":7,\"kind\":\"line\",\"text\":\"set %x\",\"file\":\"a.kel\",\"line\":2}\n");
    transcript.lineStarted("b.kel", 1);
    transcript.sent("set \"1\"");
    transcript.shown(u"set \"1\"\r\nO");
    transcript.shown(u"K\r\n>");
    transcript.sent("ver");
    transcript.ended(1, "it failed");
    EXPECT_EQ(takeEntries(),
              "line set %x\nline \nsent set \\\"1\\\"\nreceived set \\\"1\\\"\\r\\n\n"
              "received OK\\r\\n\nreceived >\nsent ver\nresult it failed\n");
    EXPECT_EQ(last_,
              "{\"ms\":7,\"kind\":\"result\",\"text\":\"it failed\",\"file\":\"b.kel\",\"line\":1,"
              "\"code\":1}\n");
    transcript.shown(std::u16string(5000, u'\xD800'));  // half a pair, without end
    EXPECT_NE(takeEntries().find("\uFFFD"), std::string::npos);
}

// However the text is cut, errors are told from what the instrument sent.
TEST_F(KelrunTranscript, TellsErrorsFromTheInstrumentsText) {
    const std::u16string shown = u">\r\n\r\nERROR: Not found: x\r\n>\r\nERROR: Not found: x";
    for (std::size_t size = 1; size <= shown.size(); ++size) {
        transcript.errorFound("a.kel", 3, u"The line could not be sent");  // never shown
        transcript.errorFound("a.kel", 4, u"Not found: x");
        for (std::size_t i = 0; i < shown.size(); i += size)
            transcript.shown(std::u16string_view(shown).substr(i, size));
        transcript.ended(0, "");
        EXPECT_EQ(takeEntries(),
                  "received >\\r\\n\necho \\r\\nERROR: Not found: x\nreceived \\r\\n\n"
                  "received >\\r\\n\nreceived ERROR: Not found: x\nresult \n")
            << size;
    }
}

}  // namespace
}  // namespace kel::kelrun
