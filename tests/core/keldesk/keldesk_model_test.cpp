// What keldesk decides without a window.
#include <gtest/gtest.h>

#include "hosts/keldesk/model/desk_options.h"
#include "hosts/keldesk/model/line_status.h"
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

TEST(KeldeskLineStatus, TellsHowLongALineStillTakes) {
    const struct {
        long elapsed;
        std::optional<Wait> wait;
        const wchar_t* text;
    } cases[] = {
        {1, {}, L"a.kel, line 7"},
        {2, {}, L"a.kel, line 7, 2 s"},
        {75, {}, L"a.kel, line 7, 1 min 15 s"},
        {0, Wait{2, false}, L"a.kel, line 7"},
        {0, Wait{600, false}, L"a.kel, line 7, 10 min 0 s left"},
        {590, Wait{600, false}, L"a.kel, line 7, 10 s left"},
        {3, Wait{20, true}, L"a.kel, line 7, at most 17 s left"},
        {601, Wait{600, false}, L"a.kel, line 7, 10 min 1 s"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(lineStatus(L"C:\\sea\\a.kel", 7, row.elapsed, row.wait), row.text);
    EXPECT_EQ(lineStatus(L"a.kel", 7, 0, {}), L"a.kel, line 7");
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
