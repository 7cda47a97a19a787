// What kelrun tells: its help, diagnostics and transcripts.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "hosts/kelrun/model/options.h"
#include "hosts/kelrun/model/transcript.h"
#include "hosts/shared/model/diagnostic.h"
#include "hosts/shared/model/source_text.h"

namespace kel::kelrun {
namespace {

using host::SourceText;

TEST(KelrunOptions, HelpFitsAScreenAndNamesEveryExitCode) {
    const std::string help = helpText();
    EXPECT_LE(std::ranges::count(help, '\n'), 24);
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LT(line.size(), 80u) << line;
    for (const char* code : {"codes: 0 ", "1 it failed", "2 wrong", "3 no", "4 cancelled", "5 a "})
        EXPECT_NE(help.find(code), std::string::npos) << code;
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
        [this](const Entry& told) {
            const std::string entry = jsonLine(told);
            if (entry.empty()) return;
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
        transcript.errorFound("a.kel", 3, 1, u"The line could not be sent");  // never shown
        transcript.errorFound("a.kel", 4, 1, u"Not found: x");
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
