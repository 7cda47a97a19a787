#include "html/html_stream.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/support/temporary_file.h"

namespace kel::html {
namespace {

const std::string kHeadUpToTitle =
    "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">\n<HTML>\n<HEAD>\n"
    "<META NAME=\"GENERATOR\" Content=\"Kelvra(HTMLStream)\">\n<TITLE>A & <B></TITLE>\n";

TEST(HtmlStreamTest, WritesEveryLineAsItIsAskedFor) {
    const struct {
        std::function<void(HTMLStream&)> write;
        std::string expected;
    } cases[] = {
        {[](HTMLStream&) {}, ""},
        {[](HTMLStream& stream) { stream.BeginDocument("A & <B>"); }, kHeadUpToTitle + "</HEAD>\n"},
        {[](HTMLStream& stream) { stream.BeginDocument("A & <B>", ""); },
         kHeadUpToTitle + "</HEAD>\n"},
        {[](HTMLStream& stream) { stream.BeginDocument("A & <B>", "a.css"); },
         kHeadUpToTitle + "<link REL=stylesheet href=\"a.css\">\n</HEAD>\n"},
        {[](HTMLStream& stream) {
             stream.OpenTag("BODY", "wide page");
             stream.OpenTag("TABLE", nullptr, "BORDER=1");
             stream.OpenTag("TR", "", "");
             stream.CloseTag();
             stream.OpenTag("TR", "odd", "ALIGN=left");
             stream.Close();
             stream.CloseTag();
             stream.OpenTag("P");
             stream.WriteLine("late");
             stream.WriteElement("TD", "late");
             stream.BeginDocument("late");
         },
         "<BODY class=wide page>\n<TABLE  BORDER=1>\n<TR >\n</TR>\n<TR class=odd ALIGN=left>\n"
         "</TR>\n</TABLE>\n</BODY>\n"},
        {[](HTMLStream& stream) {
             stream.CloseTag();
             stream.OpenTag("TR");
             stream.WriteElement("TD", "1 < 2 & 3");
             stream.WriteElement("TD", "", "right");
             stream.WriteElement("TD", nullptr, nullptr, "NOWRAP");
             stream.WriteLine("<P></P>");
         },
         "<TR >\n<TD >\n1 < 2 & 3\n</TD>\n<TD class=right>\n\n</TD>\n<TD  NOWRAP>\n</TD>\n"
         "<P></P>\n</TR>\n"},
    };
    const test::TemporaryFile file;
    for (const auto& row : cases) {
        {
            HTMLStream stream;
            ASSERT_TRUE(stream.Open(file.path()));
            row.write(stream);
        }
        EXPECT_EQ(file.bytes(), test::asTextFile(row.expected));
    }
}

TEST(HtmlStreamTest, OpensOneFileAfterAnother) {
    const test::TemporaryFile first, second;
    HTMLStream stream;
    stream.OpenTag("LOST");
    EXPECT_TRUE(stream.Open(first.path()));
    stream.OpenTag("BODY");
    EXPECT_TRUE(stream.Open(second.path()));
    stream.OpenTag("P");
    EXPECT_FALSE(stream.Open(std::filesystem::temp_directory_path()));
    stream.WriteLine("lost");
    EXPECT_EQ(first.bytes(), test::asTextFile("<BODY >\n</BODY>\n"));
    EXPECT_EQ(second.bytes(), test::asTextFile("<P >\n</P>\n"));
}

}  // namespace
}  // namespace kel::html
