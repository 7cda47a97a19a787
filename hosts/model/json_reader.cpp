#include <algorithm>
#include <charconv>

#include "hosts/model/json.h"
#include "hosts/model/unicode.h"

namespace kel::hosts {
namespace {

constexpr int kMostDepth = 32;

class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    Json document() {
        Json json = value(0);
        skipBlanks();
        if (!rest_.empty()) fail("something follows the value");
        return json;
    }

private:
    [[noreturn]] static void fail(const char* reason) {
        throw std::invalid_argument(std::string("Not JSON: ") + reason);
    }

    void skipBlanks() {
        const std::size_t blanks = rest_.find_first_not_of(" \t\r\n");
        rest_.remove_prefix(blanks == rest_.npos ? rest_.size() : blanks);
    }

    bool take(std::string_view token) {
        skipBlanks();
        if (!rest_.starts_with(token)) return false;
        rest_.remove_prefix(token.size());
        return true;
    }

    void expect(std::string_view token) {
        if (!take(token)) fail("a punctuation mark is missing");
    }

    // value = object | array | string | number | "true" | "false" | "null"
    Json value(int depth) {
        if (depth > kMostDepth) fail("it is nested too deeply");
        if (take("{")) return object(depth);
        if (take("[")) return array(depth);
        if (take("\"")) return string();
        if (take("true")) return true;
        if (take("false")) return false;
        if (take("null")) return {};
        return number();
    }

    // object = "{" [ string ":" value { "," string ":" value } ] "}"
    Json object(int depth) {
        Json::Object members;
        if (take("}")) return members;
        do {
            expect("\"");
            std::string name = toUtf8(string());
            expect(":");
            members.push_back({std::move(name), value(depth + 1)});
        } while (take(","));
        expect("}");
        return members;
    }

    // array = "[" [ value { "," value } ] "]"
    Json array(int depth) {
        Json::Array items;
        if (take("]")) return items;
        do {
            items.push_back(value(depth + 1));
        } while (take(","));
        expect("]");
        return items;
    }

    Json number() {
        const std::size_t size = std::min(rest_.find_first_not_of("+-.eE0123456789"), rest_.size());
        const std::string_view digits = rest_.substr(0, size);
        rest_.remove_prefix(size);
        if (digits.find_first_of(".eE") == digits.npos) return parsed<std::int64_t>(digits);
        return parsed<double>(digits);
    }

    template <class Number>
    static Number parsed(std::string_view digits) {
        Number number{};
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error != std::errc() || end != digits.data() + digits.size()) fail("a bad number");
        return number;
    }

    // The rest of a string whose opening quote has been taken.
    std::u16string string() {
        std::u16string text;
        for (;;) {
            const std::size_t plain = rest_.find_first_of("\"\\");
            if (plain == rest_.npos) fail("a text does not end");
            text += toUtf16(rest_.substr(0, plain));
            const bool isEnd = rest_[plain] == '"';
            rest_.remove_prefix(plain + 1);
            if (isEnd) return text;
            text += escape();
        }
    }

    char16_t escape() {
        if (rest_.empty()) fail("a text does not end");
        const char kind = rest_.front();
        rest_.remove_prefix(1);
        if (kind == 'u') return hexadecimal();
        constexpr std::string_view kKinds = "\"\\/bfnrt";
        constexpr std::u16string_view kCharacters = u"\"\\/\b\f\n\r\t";
        const std::size_t index = kKinds.find(kind);
        if (index == kKinds.npos) fail("an unknown escape");
        return kCharacters[index];
    }

    char16_t hexadecimal() {
        constexpr std::size_t kDigits = 4;
        const std::string_view digits = rest_.substr(0, kDigits);
        std::uint16_t unit = 0;
        const auto end =
            std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16).ptr;
        if (digits.size() != kDigits || end != digits.data() + kDigits) fail("a bad escape");
        rest_.remove_prefix(kDigits);
        return static_cast<char16_t>(unit);
    }

    std::string_view rest_;
};

}  // namespace

Json readJson(std::string_view text) {
    return Reader(text).document();
}

}  // namespace kel::hosts
