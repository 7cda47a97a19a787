#include "hosts/keldesk/model/line_status.h"

#include <algorithm>

namespace kel::keldesk {
namespace {

constexpr long kWorthTelling = 2;  // seconds

std::wstring duration(long seconds) {
    const std::wstring rest = std::to_wstring(seconds % 60) + L" s";
    return seconds < 60 ? rest : std::to_wstring(seconds / 60) + L" min " + rest;
}

}  // namespace

std::wstring lineStatus(std::wstring_view path, std::size_t line, long elapsed,
                        const std::optional<Wait>& wait) {
    path.remove_prefix(path.find_last_of(L"\\/") + 1);
    const std::wstring text = std::wstring(path) + L", line " + std::to_wstring(line);
    if (wait && wait->seconds > kWorthTelling && elapsed <= wait->seconds) {
        return text + (wait->mayEndEarlier ? L", at most " : L", ") +
               duration(wait->seconds - elapsed) + L" left";
    }
    return elapsed < kWorthTelling ? text : text + L", " + duration(elapsed);
}

}  // namespace kel::keldesk
