#pragma once
// JSON: its values, written on one line, and read.

#include <concepts>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kel::hosts {

// A member of an object. A template, for the value's type is complete only below.
template <class Value>
struct NamedValue {
    std::string name;
    Value value;

    bool operator==(const NamedValue&) const = default;
};

// Texts are UTF-16, as the platform has them, so that every one comes back as it was, well formed
// or not; an integer and a number with a fraction are different values.
struct Json {
    using Array = std::vector<Json>;
    using Object = std::vector<NamedValue<Json>>;  // in the order in which they are written

    Json() = default;
    // A text given by its address is no truth value, a truth value no number.
    Json(std::same_as<bool> auto truth) : value(truth) {}
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Json(Number number)
        : value(static_cast<std::int64_t>(number)) {}
    Json(double number) : value(number) {}
    Json(std::u16string text) : value(std::move(text)) {}
    Json(const char16_t* text) : value(std::u16string(text)) {}
    // UTF-8; throws std::invalid_argument when it is not.
    Json(std::string_view text);
    Json(const char* text) : Json(std::string_view(text)) {}
    Json(const std::string& text) : Json(std::string_view(text)) {}
    Json(Array items) : value(std::move(items)) {}
    Json(Object members);

    bool isNull() const { return std::holds_alternative<std::monostate>(value); }

    // The value of a kind; throws std::invalid_argument when it is of another kind. An integer is
    // also a number.
    std::int64_t integer() const;
    double number() const;
    const std::u16string& text() const;
    std::string utf8Text() const;
    const Array& array() const;

    // A member of an object; null when there is none.
    const Json* find(std::string_view name) const;

    // The same, throws std::invalid_argument when there is none.
    const Json& at(std::string_view name) const;

    bool operator==(const Json& other) const;

    std::variant<std::monostate, bool, std::int64_t, double, std::u16string, Array, Object> value;
};

using Member = NamedValue<Json>;

// Control characters and lone surrogates are escaped; everything else is UTF-8. A number that is
// not finite becomes null: there is none in JSON.
std::string write(const Json& json);

// Throws std::invalid_argument, with a reason, for what is not exactly one value.
Json readJson(std::string_view text);

}  // namespace kel::hosts
