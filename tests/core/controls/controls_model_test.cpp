#include <gtest/gtest.h>

#include "controls/model/check_rule.h"
#include "controls/model/selector_layout.h"
#include "controls/model/status_layout.h"

namespace kel::controls {
namespace {

TEST(CheckRuleTest, SelectedRowsGoWithTheOneThatIsClicked) {
    const std::vector<int> selected{2, 5, 7};
    EXPECT_EQ(rowsToCheck(5, selected), selected);
    EXPECT_EQ(rowsToCheck(4, selected), std::vector<int>{4});
    EXPECT_EQ(rowsToCheck(4, {}), std::vector<int>{4});
}

TEST(SelectorLayoutTest, TextsGetTheRoomThatTheyNeed) {
    const SelectorLayout designed{{100, 100, 400, 400},
                                  {10, 10, 290, 20},
                                  {10, 30, 290, 230},
                                  {130, 240, 205, 260},
                                  {215, 240, 290, 260}};
    SelectorLayout layout = layOut(designed, {8, 40, 40});
    EXPECT_EQ(layout.window, designed.window);
    EXPECT_EQ(layout.list, designed.list);
    EXPECT_EQ(layout.ok, designed.ok);
    EXPECT_EQ(layout.cancel, designed.cancel);

    layout = layOut(designed, {40, 100, 90});
    EXPECT_EQ(layout.window, (ui::Rectangle{100, 100, 400, 430}));
    EXPECT_EQ(layout.prompt, (ui::Rectangle{10, 10, 290, 50}));
    EXPECT_EQ(layout.list, (ui::Rectangle{10, 60, 290, 260}));
    EXPECT_EQ(layout.cancel, (ui::Rectangle{200, 270, 290, 290}));
    EXPECT_EQ(layout.ok, (ui::Rectangle{90, 270, 190, 290}));

    layout = layOut(designed, {8, 1000, 1000});
    EXPECT_EQ(layout.cancel.left, 155);
    EXPECT_EQ(layout.ok, (ui::Rectangle{10, 240, 145, 260}));
}

TEST(StatusLayoutTest, WhatIsNotShownTakesNoRoom) {
    const StatusDesign design{120, {10, 30, 290, 45}, {100, 60, 180, 83}};
    EXPECT_EQ(layOut(design, true, true), (StatusLayout{120, 60}));
    EXPECT_EQ(layOut(design, false, true), (StatusLayout{90, 30}));
    EXPECT_EQ(layOut(design, true, false), (StatusLayout{97, 60}));
    EXPECT_EQ(layOut(design, false, false), (StatusLayout{67, 30}));
}

}  // namespace
}  // namespace kel::controls
