#include "hosts/trace/model/json.h"

#include <charconv>
#include <cstdio>

#include "hosts/trace/model/unicode.h"

namespace kel::trace {
namespace {

template <class Kind>
const Kind& as(const Json& json, const char* expected) {
    const Kind* value = std::get_if<Kind>(&json.value);
    if (!value) throw std::invalid_argument(std::string("Not ") + expected);
    return *value;
}

void writeText(std::string& line, std::u16string_view text) {
    line += '"';
    std::size_t units = 0;
    for (std::size_t i = 0; i < text.size(); i += units) {
        units = unitsOfCharacter(text, i);
        const char16_t unit = text[i];
        const bool isAlone = units == 1 && (isHighSurrogate(unit) || isLowSurrogate(unit));
        if (unit == u'"' || unit == u'\\') {
            line += '\\';
            line += static_cast<char>(unit);
        } else if (unit == u'\r') {
            line += "\\r";
        } else if (unit == u'\n') {
            line += "\\n";
        } else if (unit < 0x20 || unit == 0x7F || isAlone) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
            line += escape;
        } else {
            line += utf8(text.substr(i, units));
        }
    }
    line += '"';
}

void writeNumber(std::string& line, double number) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    line += text;
    if (text.find_first_of(".e") == text.npos) line += ".0";
}

void writeValue(std::string& line, const Json& json);

struct Writer {
    std::string& line;

    void operator()(std::monostate) const { line += "null"; }
    void operator()(bool truth) const { line += truth ? "true" : "false"; }
    void operator()(std::int64_t number) const { line += std::to_string(number); }
    void operator()(double number) const { writeNumber(line, number); }
    void operator()(const std::u16string& text) const { writeText(line, text); }
    void operator()(const Json::Array& items) const {
        line += '[';
        for (const Json& item : items) {
            if (&item != &items.front()) line += ',';
            writeValue(line, item);
        }
        line += ']';
    }
    void operator()(const Json::Object& members) const {
        line += '{';
        for (const Member& member : members) {
            if (&member != &members.front()) line += ',';
            writeText(line, utf16(member.name));
            line += ':';
            writeValue(line, member.value);
        }
        line += '}';
    }
};

void writeValue(std::string& line, const Json& json) {
    std::visit(Writer{line}, json.value);
}

}  // namespace

Json::Json(std::string_view text) : value(utf16(text)) {}

Json::Json(Object members) : value(std::move(members)) {}

std::int64_t Json::integer() const {
    return as<std::int64_t>(*this, "an integer");
}

double Json::number() const {
    if (const auto* integral = std::get_if<std::int64_t>(&value)) {
        return static_cast<double>(*integral);
    }
    return as<double>(*this, "a number");
}

const std::u16string& Json::text() const {
    return as<std::u16string>(*this, "a text");
}

std::string Json::utf8Text() const {
    return utf8(text());
}

const Json::Array& Json::array() const {
    return as<Array>(*this, "an array");
}

const Json* Json::find(std::string_view name) const {
    for (const Member& member : as<Object>(*this, "an object")) {
        if (member.name == name) return &member.value;
    }
    return nullptr;
}

const Json& Json::at(std::string_view name) const {
    const Json* found = find(name);
    if (!found) throw std::invalid_argument("'" + std::string(name) + "' is missing");
    return *found;
}

bool Json::operator==(const Json& other) const {
    return value == other.value;
}

std::string write(const Json& json) {
    std::string line;
    writeValue(line, json);
    return line;
}

}  // namespace kel::trace
