#include "script/code_page_rules.h"

#include <algorithm>

#include "com/text.h"

namespace kel::script {

bool CodePageRules::isLeadByte(unsigned char byte) const {
    return IsDBCSLeadByteEx(codePage_, byte) != FALSE;
}

bool CodePageRules::isLetter(unsigned char byte) const {
    if (byte < 0x80) return TextRules::isLetter(byte);
    if (isLeadByte(byte)) return false;
    const char character = static_cast<char>(byte);
    const std::wstring wide = com::widen(std::string_view(&character, 1), codePage_);
    return wide.size() == 1 && IsCharAlphaW(wide[0]);
}

std::string CodePageRules::fold(std::string_view text) const {
    const auto isAscii = [](char character) {
        return static_cast<unsigned char>(character) < 0x80;
    };
    if (std::all_of(text.begin(), text.end(), isAscii)) return TextRules::fold(text);
    std::wstring wide = com::widen(text, codePage_);
    CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return com::narrow(wide, codePage_);
}

}  // namespace kel::script
