#include "ui/model/formats.h"

#include <charconv>

namespace kel::ui {
namespace {

struct Unit {
    std::int64_t limit;
    double reciprocal;
    int decimals;
    const char* name;
};

constexpr std::int64_t kKilobyte = 1024;
constexpr Unit kUnits[] = {
    {kKilobyte * kKilobyte, 1.0 / 0x1p10, 1, " kB"},
    {kKilobyte * kKilobyte * kKilobyte, 1.0 / 0x1p20, 2, " MB"},
    {INT64_MAX, 1.0 / 0x1p30, 2, " GB"},
};

}  // namespace

std::string decimalText(double value, int decimals, int width) {
    // The longest double has 309 digits before its point.
    char digits[400];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    std::string text(digits, end.ptr);
    const auto wanted = static_cast<std::size_t>(width);
    if (text.size() < wanted) text.insert(0, wanted - text.size(), ' ');
    return text;
}

std::string sizeText(std::int64_t bytes) {
    if (bytes < kKilobyte) return std::to_string(bytes) + " b";
    const Unit* unit = kUnits;
    while (bytes >= unit->limit && unit->limit != INT64_MAX)
        ++unit;
    return decimalText(static_cast<double>(bytes) * unit->reciprocal, unit->decimals, 4) +
           unit->name;
}

}  // namespace kel::ui
