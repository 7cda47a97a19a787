#pragma once
// What models decide, as lines in a case file: "? subject" once, then "> arguments" and what they
// give, for each row of a table.

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace kel::test {

// Between the UTF-8 of the case files and the wide texts of the models.
std::wstring wide(const std::string& text);
std::string narrow(std::wstring_view text);

// The arguments of a line, divided by blanks; one in quotes may hold some.
class Words {
public:
    explicit Words(const std::string& line) : line_(line) {}

    // Throws where there is no further one.
    std::string text();
    std::wstring wide() { return test::wide(text()); }
    template <class Number = int>
    Number number() {
        if constexpr (std::is_floating_point_v<Number>) return std::stod(text());
        return static_cast<Number>(std::stoll(text()));
    }
    // All that are left.
    std::vector<std::string> all();
    // What is left as it stands, without the blank before it.
    std::string rest();
    // All of the line, blanks included.
    std::string line() const { return line_.str(); }
    // The parts of what is left between semicolons.
    std::vector<Words> parts();

    // The next word, or what is left for a list, as an argument of a function.
    template <class Value>
    Value take() {
        if constexpr (std::is_same_v<Value, Words&>) {
            return *this;
        } else if constexpr (std::is_same_v<Value, std::string>) {
            return text();
        } else if constexpr (std::is_same_v<Value, std::wstring>) {
            return wide();
        } else if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
            return number<Value>();
        } else {
            Value values;
            while (line_ >> std::ws && !line_.eof())
                values.push_back(take<typename Value::value_type>());
            return values;
        }
    }

private:
    std::istringstream line_;
};

// A result as the tables show it: "none" for nothing, the items of a list with blanks between them.
template <class Value>
std::string shown(const Value& value) {
    if constexpr (std::is_convertible_v<const Value&, std::string>) {
        return value;
    } else if constexpr (std::is_convertible_v<const Value&, std::wstring_view>) {
        return narrow(value);
    } else if constexpr (requires { value.has_value(); }) {
        return value ? shown(*value) : "none";
    } else if constexpr (std::is_enum_v<Value>) {
        return std::to_string(static_cast<std::underlying_type_t<Value>>(value));
    } else if constexpr (requires { value.begin(); }) {
        std::string all;
        for (const auto& each : value)
            all += (all.empty() ? "" : " ") + shown(each);
        return all;
    } else {
        return std::to_string(value);
    }
}
template <class... Values>
requires(sizeof...(Values) > 1) std::string shown(const Values&... values) {
    return shown(std::vector{shown(values)...});
}

// What each beginning of a text gives, from the empty one to the whole; alike ones are counted.
std::string ofEachBeginning(const std::string& text,
                            const std::function<std::string(const std::string&)>& play);

// Does a line of a case and gives what it shows.
using Player = std::function<std::string(Words&)>;

// How an argument of a function is kept.
template <class Argument>
using Kept = std::conditional_t<
    std::is_same_v<Argument, Words&>, Words&,
    std::conditional_t<std::is_same_v<Argument, std::string_view>, std::string,
                       std::conditional_t<std::is_same_v<Argument, std::wstring_view>, std::wstring,
                                          std::remove_cvref_t<Argument>>>>;

// Calls a function with the words of a line.
template <class Result, class... Arguments>
Player playing(std::function<Result(Arguments...)> function) {
    return [function](Words& words) {
        const std::tuple<Kept<Arguments>...> arguments{words.take<Kept<Arguments>>()...};
        return shown(std::apply(function, arguments));
    };
}

// A subject under its name, for as long as the program runs.
struct Subject {
    // A function, whose arguments are the words of a line. Each case has a copy of it, which may
    // remember what its lines did.
    template <class Function>
    Subject(const char* name, Function function)
        : Subject(name, [function] { return playing(std::function(function)); }) {}
    // With a player made for each case.
    template <class Make>
    requires std::is_invocable_v<Make> Subject(const char* name, Make make)
        : Subject(name, std::function<Player()>(make)) {}
    Subject(const char* name, std::function<Player()> make);
};

}  // namespace kel::test
