#include "com/text_file.h"

#include <windows.h>

#include <stdexcept>

#include "com/text.h"

namespace kel::com {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleEndianMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";

bool takePrefix(std::string_view& bytes, std::string_view prefix) {
    if (!bytes.starts_with(prefix)) return false;
    bytes.remove_prefix(prefix.size());
    return true;
}

std::wstring decodeUtf16(std::string_view bytes, std::size_t lowByte) {
    if (bytes.size() % 2 != 0) throw std::invalid_argument("is UTF-16 with half a character");
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i + lowByte]);
        const auto high = static_cast<unsigned char>(bytes[i + 1 - lowByte]);
        text += static_cast<wchar_t>(high << 8 | low);
    }
    return text;
}

bool isUtf8(std::string_view bytes) {
    return bytes.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                                static_cast<int>(bytes.size()), nullptr, 0) > 0;
}

std::wstring decode(std::string_view bytes) {
    if (takePrefix(bytes, kUtf16LittleEndianMark)) return decodeUtf16(bytes, 0);
    if (takePrefix(bytes, kUtf16BigEndianMark)) return decodeUtf16(bytes, 1);
    const bool isMarked = takePrefix(bytes, kUtf8Mark);
    if (isUtf8(bytes)) return widen(bytes, CP_UTF8);
    if (isMarked) throw std::invalid_argument("is marked as UTF-8 but is not");
    return widen(bytes);
}

}  // namespace

std::wstring decodeTextFile(std::string_view bytes) {
    std::wstring text = decode(bytes);
    if (text.find(L'\0') != text.npos) {
        throw std::invalid_argument("is no text: it holds a NUL character");
    }
    return text;
}

}  // namespace kel::com
