#pragma once
// What models decide, as lines in a case file: "? subject" once, then "> arguments" and what they
// give, for each row of a table.

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
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
    // All of the line, blanks included.
    std::string line() const { return line_.str(); }

private:
    std::istringstream line_;
};

// Does a line of a case and gives what it shows.
using Player = std::function<std::string(Words&)>;

// A subject under its name, for as long as the program runs.
struct Subject {
    Subject(const char* name, Player play);
    // With a player for each case, which may remember what its lines did.
    Subject(const char* name, std::function<Player()> make);
};

}  // namespace kel::test
