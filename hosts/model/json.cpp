#include "hosts/model/json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "hosts/model/unicode.h"

namespace kel::hosts {
namespace {

template <class Kind>
const Kind& as(const Json& json, const char* expected) {
    const Kind* value = std::get_if<Kind>(&json.value);
    if (!value) throw std::invalid_argument(std::string("Not ") + expected);
    return *value;
}

void writeEscape(std::string& line, char16_t unit) {
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit));
    line += escape;
}

void writeText(std::string& line, std::u16string_view text) {
    line += '"';
    while (!text.empty()) {
        const auto [code, size] = frontCharacter(text);
        if (code == U'"' || code == U'\\') {
            line.append(1, '\\').append(1, static_cast<char>(code));
        } else if (code == U'\r') {
            line += "\\r";
        } else if (code == U'\n') {
            line += "\\n";
        } else if (code == U'\t') {
            line += "\\t";
        } else if (code < 0x20 || code == 0x7F || isHighSurrogate(code) || isLowSurrogate(code)) {
            writeEscape(line, text[0]);
        } else {
            line += toUtf8(text.substr(0, size));
        }
        text.remove_prefix(size);
    }
    line += '"';
}

void writeNumber(std::string& line, double number) {
    if (!std::isfinite(number)) {
        line += "null";
        return;
    }
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
            writeText(line, toUtf16(member.name));
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

Json::Json(std::string_view text) : value(toUtf16(text)) {}

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
    return toUtf8(text());
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

}  // namespace kel::hosts
