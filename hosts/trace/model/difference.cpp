#include "hosts/trace/model/difference.h"

#include "hosts/model/unicode.h"

namespace kel::trace {
namespace {

std::string describe(const Position& position) {
    const std::string line = "line " + std::to_string(position.line);
    return position.file.empty() ? line : hosts::toUtf8(position.file) + ", " + line;
}

}  // namespace

std::string describe(const Call& call) {
    std::string text = call.object + "." + call.method + "(";
    for (const Json& argument : call.in) {
        if (&argument != &call.in.front()) text += ", ";
        text += write(argument);
    }
    return text + ")";
}

std::string describeDifference(const Call* expected, const Call* actual, const Position& now) {
    std::string text = "The replay leaves its recording";
    if (now.line != 0) text += " at " + describe(now);
    text += ": expected ";
    text += expected ? describe(*expected) : "no further call";
    if (expected && expected->position.line != 0) {
        text += " (recorded at " + describe(expected->position) + ")";
    }
    return text + (actual ? ", got " + describe(*actual) : ", which did not come");
}

}  // namespace kel::trace
