// The report of a run: the page that people read.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>

#include "hosts/kelrun/model/report.h"
#include "tests/support/project_file.h"

namespace kel::kelrun {
namespace {

// A page in memory, with a clock that goes on by itself.
class KelrunReport : public testing::Test {
protected:
    std::string page;
    long long now = 0;
    Report report{
        {"a<b>.kel", "2031-02-03 04:05:06, UTC+00:00", "Some.Link", "COM3, 9600 baud", "1.0.0"},
        [this](std::uint64_t offset, std::string_view text) {
            page.resize(std::max<std::size_t>(page.size(), offset + text.size()));
            page.replace(offset, text.size(), text);
        }};
    Transcript transcript{[this] { return now += 1501; },
                          [this](const Entry& entry) {
                              report.tell(entry);
                              expectWholePage();
                          },
                          "a<b>.kel", host::SourceText(L"ver\n#MSGBOX \"<b>\" & '\n%nosuch")};

    void expectWholePage() const {
        EXPECT_TRUE(page.ends_with("</tr>\n</table>\n</body>\n</html>\n")) << page.substr(5000);
        EXPECT_EQ(page.find("</html>"), page.size() - 8);
    }
    // The last row without its time and its end.
    std::string lastRow() const {
        const std::size_t start = page.find("<td>", page.rfind("<tr ")) + 4;
        return page.substr(page.find("<td>", start),
                           page.rfind("</tr>") - page.find("<td>", start));
    }
    std::string head() const {
        const std::size_t start = page.find("<dt>Result");
        const std::string part = page.substr(start, page.find("</dl>") - start);
        return part.substr(0, part.find_last_not_of(" \n") + 1);
    }
};

TEST_F(KelrunReport, ShowsARunAsTheExampleDoes) {
    transcript.lineStarted("a<b>.kel", 1);
    transcript.sent("ver");
    transcript.shown(u"ver\r\n<script>alert(1)</script>\x1B[2J \x202Etxt.exe\r\nhalf & \"line\"");
    transcript.lineStarted("a<b>.kel", 2);
    transcript.lineStarted("C:\\inner & outer.kel", 1);
    transcript.lineStarted("a<b>.kel", 3);
    transcript.errorFound("a<b>.kel", 3, 2, u"Variable not found: nosuch");
    transcript.shown(u"\r\nERROR: Variable not found: nosuch\r\n>");
    transcript.ended(1, "a<b>.kel:3:2: Variable not found: nosuch");

    std::ifstream file(test::projectFile("tests/core/kelrun/report.html"), std::ios::binary);
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(page, expected);
}

TEST_F(KelrunReport, TellsHowARunEnded) {
    EXPECT_EQ(head(),
              "<dt>Result<dd class=\"failed\">Not ended: the run goes on, or was broken off");
    const std::string before = page;
    transcript.ended(0, "ran");
    EXPECT_EQ(head(),
              "<dt>Result<dd class=\"ran\">Ran to its end (exit code 0)\n<dt>Duration<dd>0:01.501");
    now = 3'725'000;
    transcript.ended(4, "cancelled & <gone>");
    EXPECT_EQ(head(),
              "<dt>Result<dd class=\"failed\">Cancelled (exit code 4): cancelled &amp; "
              "&lt;gone&gt;\n<dt>Duration<dd>1:02:06.501");
    // Words of any length leave the rest where it is.
    transcript.ended(3, std::string(5000, '<'));
    EXPECT_TRUE(head().find("&lt;\u2026\n<dt>Duration<dd>") != std::string::npos) << head();
    EXPECT_EQ(page.find("<table>"), before.find("<table>"));
}

TEST_F(KelrunReport, LetsNoTextHideOrBecomeMarkup) {
    const struct {
        std::string text;
        const char* row;
    } cases[] = {
        {"<td>&amp;\"'", "&lt;td&gt;&amp;amp;&quot;&#39;"},
        {"\r\n", ""},
        {"a\r\n\r\n", "a\u240D\u240A"},
        {"\t\x1B\x7F" + std::string(1, '\0'), "\t\u241B\u2421\u2400"},
        {"\xC2\x85", "\uFFFD"},
        {"\u202Eevil\u200B\uFEFF", "<i>U+202E</i>evil<i>U+200B</i><i>U+FEFF</i>"},
        {"\U000E0041\U0010FFFF", "<i>U+E0041</i><i>U+10FFFF</i>"},
        {"\xFF\xFE", "\uFFFD"},
        {"21 \u00B0C \U0001F30A \u6F22", "21 \u00B0C \U0001F30A \u6F22"},
    };
    for (const auto& row : cases) {
        transcript.sent(row.text);
        EXPECT_EQ(lastRow(), std::string("<td><td>sent<td>") + row.row);
    }
}

}  // namespace
}  // namespace kel::kelrun
