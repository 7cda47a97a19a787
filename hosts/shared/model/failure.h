#pragma once
// How a run can end, as the caller of the program learns it.

#include <stdexcept>
#include <string>

namespace kel::host {

enum class ExitCode {
    kRan = 0,
    kFailed = 1,
    kUsage = 2,
    kNoConnection = 3,
    kCancelled = 4,
    kNotRegistered = 5,
};

// Ends the program. The text (UTF-8, one line) is for the user.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

}  // namespace kel::host
