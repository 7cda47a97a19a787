#pragma once
// What the engine has to know about the code page that scripts are written in.

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace kel::script {

// The rules of plain ASCII; a host overrides them for the user's code page.
class TextRules {
public:
    virtual ~TextRules() = default;

    // Whether the byte is the first half of a two-byte character.
    virtual bool isLeadByte(unsigned char byte) const;

    // Whether the byte, taken alone, is a letter.
    virtual bool isLetter(unsigned char byte) const;

    // Texts that differ in letter case only have the same folded form.
    virtual std::string fold(std::string_view text) const;

    bool equal(std::string_view left, std::string_view right) const;
};

// The classes of single bytes, looked up once so that parsing makes no virtual calls.
class Characters {
public:
    explicit Characters(const TextRules& rules);

    // Letters, digits and underscores.
    bool isName(char c) const { return (classes_[index(c)] & kName) != 0; }
    bool isBlank(char c) const { return (classes_[index(c)] & kBlank) != 0; }
    bool hasLeadBytes() const { return hasLeadBytes_; }
    bool isDigit(char c) const { return c >= '0' && c <= '9'; }

    // Where, from a position on, something may begin or end in a line that is sent; else its size.
    std::size_t findMark(std::string_view text, std::size_t from) const {
        const auto isMark = [this](char c) { return (classes_[index(c)] & kMark) != 0; };
        const auto mark = std::find_if(text.begin() + from, text.end(), isMark);
        return static_cast<std::size_t>(mark - text.begin());
    }

    // Bytes of the character at `position`: 2 for a lead byte with its trail byte, else 1.
    std::size_t width(std::string_view text, std::size_t position) const {
        const bool isLead = (classes_[index(text[position])] & kLead) != 0;
        return isLead && position + 1 < text.size() ? 2 : 1;
    }

    std::string_view trim(std::string_view text) const;

private:
    enum : unsigned char { kName = 1, kBlank = 2, kLead = 4, kMark = 8 };
    static std::size_t index(char c) { return static_cast<unsigned char>(c); }

    std::array<unsigned char, 256> classes_{};
    bool hasLeadBytes_ = false;
};

// Compares the language's own words, whose letters are ASCII in every code page.
bool equalsWord(std::string_view text, std::string_view word);

}  // namespace kel::script
