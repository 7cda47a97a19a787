#include "terminal/model/pane_text.h"

#include <gtest/gtest.h>

namespace kel::terminal {
namespace {

TEST(PaneTextTest, ALineBeginsWithItsTimeWhenItsFirstCharacterCame) {
    int line = 0;
    PaneText text([&] { return std::to_wstring(++line) + L" "; });
    PaneChange change;
    text.take(L"a\r\n", change);
    text.take(L"\r\n\b\bb\b\b\bc", change);
    EXPECT_EQ(change.added, L"1 a\r\n\r\n2 c");
    text.restart(true);
    change = {};
    text.take(L"\bd", change);
    EXPECT_EQ(change.removed, 0u);
    EXPECT_EQ(change.added, L"3 d");
}

}  // namespace
}  // namespace kel::terminal
