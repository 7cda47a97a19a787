#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kel::bench {

// A command that the instrument refuses; the text follows "ERROR: " in its answer.
class CommandError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The instrument's settings by name: every value is text in the form in which it is shown, checked
// when it is set. Names and choices are compared without regard to case.
class InstrumentSetup {
public:
    // Every setting has its value from the factory.
    InstrumentSetup();

    // Throws CommandError for an unknown name or a value that the setting does not take.
    void set(std::string_view name, std::string_view value);
    // Throws CommandError for an unknown name.
    const std::string& get(std::string_view name) const;
    // The value of a numeric setting.
    double number(std::string_view name) const;

    // One "name=value" line a setting, in a fixed order.
    std::string toText() const;
    // Settings that the text leaves out have their value from the factory. Throws CommandError
    // that tells the line for anything else that toText could not have written.
    static InstrumentSetup fromText(std::string_view text);

    // One line a setting: name, accepted values, meaning.
    static std::string help();

    bool operator==(const InstrumentSetup&) const = default;

private:
    std::vector<std::string> values_;
};

}  // namespace kel::bench
