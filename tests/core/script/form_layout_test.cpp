#include "script/model/form_layout.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kel::script {

// For the messages of failing tests.
void PrintTo(const Place& place, std::ostream* stream) {
    *stream << place.left << ',' << place.top << ' ' << place.width << 'x' << place.height;
}

namespace {

constexpr FormSpace kScreen{680, 440, 10};

int fourEach(std::wstring_view text) {
    return static_cast<int>(4 * text.size());
}

FormLayout layOut(std::vector<FormRow> rows, std::wstring title = L"T") {
    return layOut({std::move(title), std::move(rows)}, kScreen, fourEach);
}

TEST(FormLayoutTest, CaptionsAndFieldsStandInColumns) {
    const FormLayout form =
        layOut({{ControlKind::Input, L"Depth", L"12", {}},
                {ControlKind::Check, L"Erase first", L"1", {}},
                {ControlKind::Select, L"Plan", L"a", {L"a", std::wstring(30, L'b')}}});
    ASSERT_EQ(form.rows.size(), 3u);
    EXPECT_EQ(form.rows[0].captionPlace, (Place{7, 7, 44, 13}));
    EXPECT_EQ(form.rows[0].field, (Place{57, 7, 138, 13}));
    EXPECT_EQ(form.rows[1].captionPlace, (Place{7, 24, 44, 13}));
    EXPECT_EQ(form.rows[1].field, (Place{52, 24, 14, 13}));
    EXPECT_EQ(form.rows[2].field, (Place{57, 41, 138, 13}));
    EXPECT_EQ(form.rows[2].listWidth, 138);
    EXPECT_FALSE(form.scrolls);
    EXPECT_EQ(form.width, 202);
    EXPECT_EQ(form.height, 54 + 7 + 14 + 7);
    EXPECT_EQ(form.ok, (Place{91, 61, 50, 14}));
    EXPECT_EQ(form.cancel, (Place{145, 61, 50, 14}));
}

TEST(FormLayoutTest, WithoutControlsThereAreJustTheButtons) {
    const FormLayout form = layOut({});
    EXPECT_EQ(form.ok, (Place{7, 7, 50, 14}));
    EXPECT_EQ(form.cancel, (Place{61, 7, 50, 14}));
    EXPECT_EQ(form.width, 118);
    EXPECT_EQ(form.height, 28);
    EXPECT_EQ(layOut({}, std::wstring(30, L't')).width, 160);
}

TEST(FormLayoutTest, LongTextsTakeAShareOfTheScreen) {
    const std::wstring endless(500, L'm');
    const FormLayout form = layOut({{ControlKind::Select, endless, L"", {endless}},
                                    {ControlKind::Input, L"Short", endless, {}}});
    EXPECT_LE(form.width, kScreen.width * 3 / 4);
    EXPECT_EQ(form.rows[0].captionPlace.width, 198);
    EXPECT_EQ(form.rows[0].caption, std::wstring(46, L'm') + L"...");
    EXPECT_EQ(form.rows[1].caption, L"Short");
    EXPECT_EQ(form.rows[1].field.left + form.rows[1].field.width + 7, form.width);
    EXPECT_LE(form.rows[0].listWidth, kScreen.width * 3 / 4);
}

TEST(FormLayoutTest, WhatDoesNotFitScrolls) {
    const std::size_t fitting = layOut(std::vector<FormRow>(50)).visibleRows;
    EXPECT_FALSE(layOut(std::vector<FormRow>(fitting)).scrolls);
    for (const std::size_t count : {fitting + 1, std::size_t{1000}}) {
        const FormLayout form =
            layOut(std::vector<FormRow>(count, {ControlKind::Input, L"Value", L"", {}}));
        EXPECT_TRUE(form.scrolls);
        EXPECT_LE(form.height, kScreen.height);
        EXPECT_GT(form.height, kScreen.height - 17);
        EXPECT_EQ(form.pane.height, form.visibleRows * form.rowHeight);
        EXPECT_GE(form.ok.top, form.pane.top + form.pane.height);
        EXPECT_EQ(form.rows[1].field.top - form.rows[0].field.top, form.rowHeight);
        EXPECT_EQ(form.width, form.rows[0].field.left + 100 + 7 + kScreen.scrollBar);
    }
    EXPECT_THROW(layOut(std::vector<FormRow>(1001)), std::length_error);
}

}  // namespace
}  // namespace kel::script
