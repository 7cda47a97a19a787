#include "script/engine/clock.h"

#include <cstdio>

namespace kel::script {
namespace {

std::string formatted(const char* format, int first, int second, int third) {
    char text[64];
    std::snprintf(text, sizeof text, format, first, second, third);
    return text;
}

}  // namespace

std::string dateText(const LocalTime& time) {
    return formatted("%.04d/%.02d/%.02d", time.year, time.month, time.day);
}

std::string timeText(const LocalTime& time) {
    return formatted("%.02d:%.02d:%.02d", time.hour, time.minute, time.second);
}

}  // namespace kel::script
