#include "hosts/kelrun/model/json.h"

namespace kel::kelrun {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr unsigned char kDelete = 0x7F;

void appendEscaped(std::string& result, char c) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
        case '"':
        case '\\':
            result.append(1, '\\').append(1, c);
            break;
        case '\n':
            result += "\\n";
            break;
        case '\r':
            result += "\\r";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            if (byte >= ' ' && byte != kDelete) {
                result += c;
            } else {
                result.append("\\u00")
                    .append(1, kHexDigits[byte >> 4])
                    .append(1, kHexDigits[byte & 0xF]);
            }
    }
}

}  // namespace

std::string jsonString(std::string_view text) {
    std::string result = "\"";
    result.reserve(text.size() + 2);
    for (const char c : text)
        appendEscaped(result, c);
    return result + '"';
}

JsonObject& JsonObject::add(std::string_view name, std::string_view text) {
    addRaw(name, jsonString(text));
    return *this;
}

JsonObject& JsonObject::add(std::string_view name, long long number) {
    addRaw(name, std::to_string(number));
    return *this;
}

void JsonObject::addRaw(std::string_view name, std::string_view value) {
    if (members_.size() > 1) members_ += ',';
    members_.append(jsonString(name)).append(1, ':').append(value);
}

}  // namespace kel::kelrun
