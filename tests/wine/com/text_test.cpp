#include "com/text.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "com/text_file.h"

namespace kel::com {
namespace {

using namespace std::string_view_literals;

constexpr UINT kShiftJis = 932;
constexpr UINT kWestern = 1252;

TEST(Text, IsConvertedBothWays) {
    const struct {
        UINT codePage;
        std::string_view bytes;
        std::wstring_view characters;
    } rows[] = {
        {kWestern, "", L""},
        {kWestern, "plain"sv, L"plain"sv},
        {kWestern, "a\0b\0"sv, L"a\0b\0"sv},
        {kWestern, "\xE4\x80"sv, L"\u00E4\u20AC"sv},
        // The second byte of the double-byte character is a backslash, or a letter.
        {kShiftJis, "\x83\x5C|\x83\x41\xB1"sv, L"\u30BD|\u30A2\uFF71"sv},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(widen(row.bytes, row.codePage), row.characters) << row.bytes;
        EXPECT_EQ(narrow(row.characters, row.codePage), row.bytes) << row.bytes;
    }
}

TEST(Text, WhatACodePageCannotHoldBecomesItsDefaultCharacter) {
    EXPECT_EQ(narrow(L"a\u4E00b", kWestern), "a?b");
    EXPECT_EQ(narrow(L"\uFF02\u2032", kWestern), "??");
    EXPECT_EQ(narrow(L"a\xD800", kWestern), "a?");
    EXPECT_EQ(narrow(L"\xDC00z", kWestern), "?z");
    // A lead byte at the end has no character.
    EXPECT_EQ(widen("a\x83", kShiftJis).substr(0, 1), L"a");
}

TEST(TextFile, KnowsEncodingsByMarkAndContent) {
    const struct {
        std::string_view bytes;
        std::wstring text;
    } cases[] = {
        {"", L""},
        {"ver\r\n", L"ver\r\n"},
        {"\xC2\xB0", L"\u00B0"},
        {"\xB0", widen("\xB0")},
        {"\xEF\xBB\xBF\xC2\xB0", L"\u00B0"},
        {"\xFF\xFEv\0\xB0\0"sv, L"v\u00B0"},
        {"\xFE\xFF\0v\x20\xAC"sv, L"v\u20AC"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(decodeTextFile(row.bytes), row.text);
    // Marked but invalid, half a character, binary, UTF-16 without a mark.
    for (const auto bytes : {"\xEF\xBB\xBF\xB0"sv, "\xFF\xFEv"sv, "MZ\x90\0"sv, "v\0e\0"sv})
        EXPECT_THROW(decodeTextFile(bytes), std::invalid_argument);
}

}  // namespace
}  // namespace kel::com
