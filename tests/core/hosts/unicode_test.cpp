#include "hosts/model/unicode.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace kel::hosts {
namespace {

using namespace std::string_view_literals;

TEST(Unicode, ConvertsBothWaysAndRefusesWhatIsNotUtf8) {
    constexpr auto kText = u"a\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF"sv;
    EXPECT_EQ(toUtf16(toUtf8(kText)), kText);
    EXPECT_EQ(toUtf8(u"\u00B0\u20AC\U0001F30A"sv), "\xC2\xB0\xE2\x82\xAC\xF0\x9F\x8C\x8A");
    constexpr char16_t kHalves[] = {0xDC00, u'x', 0xD800};
    EXPECT_EQ(toUtf8({kHalves, 3}), "\xEF\xBF\xBDx\xEF\xBF\xBD");
    // Lone tails and leads, overlong forms, surrogates, beyond the last character.
    for (const auto bytes :
         {"\x80"sv, "\xC3"sv, "\xC3("sv, "\xC0\x80"sv, "\xE0\x9F\xBF"sv, "\xED\xA0\x80"sv,
          "\xF0\x8F\xBF\xBF"sv, "\xF4\x90\x80\x80"sv, "\xFF"sv, "\xE2\x82"sv}) {
        EXPECT_EQ(tryToUtf16(bytes), std::nullopt);
        EXPECT_THROW(toUtf16(bytes), std::invalid_argument);
    }
}

}  // namespace
}  // namespace kel::hosts
