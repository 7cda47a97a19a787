#include "hosts/trace/model/difference.h"

#include "hosts/model/unicode.h"

namespace kel::trace {
namespace {

std::string describe(const Position& position) {
    const std::string line = "line " + std::to_string(position.line);
    return position.file.empty() ? line : hosts::toUtf8(position.file) + ", " + line;
}

std::string list(const Json::Array& values) {
    std::string text;
    for (const Json& value : values) {
        if (!text.empty()) text += ", ";
        text += write(value);
    }
    return text;
}

std::string leaving(const Position& now) {
    const std::string text = "The replay leaves its recording";
    return (now.line != 0 ? text + " at " + describe(now) : text) + ": ";
}

std::string describe(const EventAnswered& answer) {
    return answer.out.empty() ? "no answer" : "the answer " + list(answer.out);
}

}  // namespace

std::string describe(const Call& call) {
    return call.object + "." + call.method + "(" + list(call.in) + ")";
}

std::string describeDifference(const Call* expected, const Call* actual, const Position& now) {
    std::string text = leaving(now) + "expected ";
    text += expected ? describe(*expected) : "no further call";
    if (expected && expected->position.line != 0) {
        text += " (recorded at " + describe(expected->position) + ")";
    }
    return text + (actual ? ", got " + describe(*actual) : ", which did not come");
}

std::string describeDifference(const EventFired& event, const EventAnswered& expected,
                               const EventAnswered& actual, const Position& now) {
    return leaving(now) + "expected " + describe(expected) + " to event " +
           std::to_string(event.member) + "(" + list(event.in) + ") of " + event.object + ", got " +
           describe(actual);
}

std::string describeDifference(const FilePiece& piece, const std::string& reason,
                               const Position& now) {
    return leaving(now) + "the file " + write(Json(piece.name)) + " of " + piece.object +
           " cannot be left as it was: " + reason;
}

}  // namespace kel::trace
