#include "hosts/trace/model/trace_text.h"

namespace kel::trace {
namespace {

constexpr std::string_view kFormat = "kel-trace";
constexpr std::int64_t kVersion = 1;

void checkHeader(std::string_view line) {
    const Json header = hosts::readJson(line);
    if (header.at("format").utf8Text() != kFormat) {
        throw std::invalid_argument("This is no trace of an instrument link");
    }
    if (header.at("version").integer() != kVersion) {
        throw std::invalid_argument("The trace has a version that is not known here");
    }
}

}  // namespace

std::string headerLine(std::string_view started) {
    return write(Json::Object{{"format", kFormat}, {"version", kVersion}, {"started", started}});
}

std::vector<Event> readTrace(std::string_view text) {
    std::vector<Event> events;
    std::size_t number = 0;
    for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n')) {
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end + 1);
        ++number;
        try {
            if (number == 1) {
                checkHeader(line);
            } else {
                events.push_back(fromLine(line));
            }
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument("Line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (number == 0) throw std::invalid_argument("The trace is empty");
    return events;
}

}  // namespace kel::trace
