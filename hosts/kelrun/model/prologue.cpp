#include "hosts/kelrun/model/prologue.h"

#include <algorithm>
#include <string_view>

#include "hosts/kelrun/model/failure.h"

namespace kel::kelrun {
namespace {

constexpr std::size_t kLongestName = 128;  // a longer one could not be referred to

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

[[noreturn]] void refuse(const Variable& variable, std::string_view reason) {
    throw Failure(ExitCode::kUsage, "--var " + variable.name + ": " + std::string(reason));
}

void checkVariable(const Variable& variable) {
    if (variable.name.empty() || variable.name.size() > kLongestName ||
        !std::ranges::all_of(variable.name, isNameCharacter)) {
        refuse(variable, "a name is 1 to 128 letters, digits and underscores");
    }
    if (variable.value.find('"') != std::string::npos) {
        refuse(variable, "a value cannot hold a double quote");
    }
    if (variable.value.find("//") != std::string::npos) {
        refuse(variable, "a value cannot hold //, which begins a comment");
    }
    if (variable.value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
        refuse(variable, "a value cannot hold a line end");
    }
}

}  // namespace

std::string prologue(std::span<const Variable> variables) {
    std::string script;
    for (const Variable& variable : variables) {
        checkVariable(variable);
        script += '@' + variable.name + "=\"" + variable.value + "\"\n";
    }
    return script;
}

}  // namespace kel::kelrun
