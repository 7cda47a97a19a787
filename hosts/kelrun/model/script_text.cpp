#include "hosts/kelrun/model/script_text.h"

#include <stdexcept>

#include "hosts/model/unicode.h"

namespace kel::kelrun {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleEndianMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";

bool takePrefix(std::string_view& bytes, std::string_view prefix) {
    if (!bytes.starts_with(prefix)) return false;
    bytes.remove_prefix(prefix.size());
    return true;
}

std::u16string decodeUtf16(std::string_view bytes, std::size_t lowByte) {
    if (bytes.size() % 2 != 0) throw std::invalid_argument("is UTF-16 with half a character");
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i + lowByte]);
        const auto high = static_cast<unsigned char>(bytes[i + 1 - lowByte]);
        text += static_cast<char16_t>(high << 8 | low);
    }
    return text;
}

std::optional<std::u16string> decode(std::string_view bytes) {
    if (takePrefix(bytes, kUtf16LittleEndianMark)) return decodeUtf16(bytes, 0);
    if (takePrefix(bytes, kUtf16BigEndianMark)) return decodeUtf16(bytes, 1);
    const bool isMarked = takePrefix(bytes, kUtf8Mark);
    auto text = hosts::tryToUtf16(bytes);
    if (isMarked && !text) throw std::invalid_argument("is marked as UTF-8 but is not");
    return text;
}

}  // namespace

std::optional<std::u16string> decodeScript(std::string_view bytes) {
    auto text = decode(bytes);
    const bool hasNul = text ? text->find(u'\0') != std::u16string::npos
                             : bytes.find('\0') != std::string_view::npos;
    if (hasNul) throw std::invalid_argument("is no text: it holds a NUL character");
    return text;
}

}  // namespace kel::kelrun
