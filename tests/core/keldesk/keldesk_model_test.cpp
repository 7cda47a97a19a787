// What keldesk decides without a window.
#include <gtest/gtest.h>

#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/model/recent_menu.h"
#include "hosts/shared/model/failure.h"

namespace kel::keldesk {
namespace {

TEST(KeldeskRecentMenu, MenuShowsNumberAndPath) {
    EXPECT_EQ(menuText(0, L"C:\\salt & sea.kel"), L"&1 C:\\salt && sea.kel");
    EXPECT_EQ(menuText(9, L"a"), L"1&0 a");
    const std::wstring text = menuText(1, L"C:\\" + std::wstring(300, L'x') + L"\\deploy.kel");
    EXPECT_EQ(text.size(), 63u);
    EXPECT_EQ(text.substr(0, 7), L"&2 C:\\\u2026");
    EXPECT_EQ(text.substr(53), L"deploy.kel");
}

TEST(KeldeskOptions, ReadsTheCommandLine) {
    const std::vector<std::string> given{"--tcp",  "host:1",    "--baud", "19200",
                                         "--link", "Some.Link", "a.kel"};
    const DeskOptions options = parseDeskOptions(given);
    EXPECT_EQ(nameOf(options.target), "host:1");
    EXPECT_EQ(options.target.baudRate, 19200);
    EXPECT_EQ(options.link, "Some.Link");
    EXPECT_EQ(options.script, "a.kel");
    using Arguments = std::vector<std::string>;
    for (const Arguments& wrong :
         {Arguments{"--port"}, Arguments{"--baud", "fast"}, Arguments{"--baud", "0"},
          Arguments{"--nosuch", "x"}, Arguments{"a", "b"},
          Arguments{"--port", "COM1", "--tcp", "h:1"}}) {
        EXPECT_THROW(parseDeskOptions(wrong), host::Failure) << wrong.front();
    }
}

}  // namespace
}  // namespace kel::keldesk
