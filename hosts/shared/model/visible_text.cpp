#include "hosts/shared/model/visible_text.h"

#include <algorithm>

#include "hosts/model/unicode.h"

namespace kel::host {
namespace {

constexpr char16_t kFirstControlPicture = 0x2400;
constexpr char16_t kDelete = 0x7F;
constexpr char16_t kDeletePicture = 0x2421;
constexpr char16_t kLastUpperControl = 0x9F;

}  // namespace

char16_t visible(char16_t character) {
    if (character == u'\t') return character;
    if (character < u' ') return static_cast<char16_t>(kFirstControlPicture + character);
    if (character == kDelete) return kDeletePicture;
    if (character > kDelete && character <= kLastUpperControl) return hosts::kReplacementCharacter;
    return character;
}

std::string oneLine(std::string_view text) {
    auto readable =
        hosts::tryToUtf16(text).value_or(std::u16string(1, hosts::kReplacementCharacter));
    std::ranges::transform(readable, readable.begin(), visible);
    return hosts::toUtf8(readable);
}

}  // namespace kel::host
