#include "html/html_stream.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_file.h"

namespace kel::html {
namespace {

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
