#include "hosts/shared/model/line_status.h"

namespace kel::host {
namespace {

std::wstring duration(std::chrono::seconds time) {
    const std::wstring rest = std::to_wstring(time.count() % 60) + L" s";
    return time.count() < 60 ? rest : std::to_wstring(time.count() / 60) + L" min " + rest;
}

}  // namespace

std::wstring lineStatus(std::wstring_view path, std::size_t line, std::chrono::seconds elapsed,
                        const std::optional<Wait>& wait) {
    path.remove_prefix(path.find_last_of(L"\\/") + 1);
    std::wstring text = std::wstring(path) + L", line " + std::to_wstring(line);
    const std::chrono::seconds limit{wait ? wait->seconds : 0};
    if (elapsed < kWorthTelling && limit <= kWorthTelling) return text;
    const std::wstring what = wait ? text + L", " + wait->what : text;
    if (limit > kWorthTelling && elapsed <= limit) {
        return what + (wait->endsEarlier ? L", at most " : L", ") + duration(limit - elapsed) +
               L" left";
    }
    return what + L", " + duration(elapsed);
}

}  // namespace kel::host
