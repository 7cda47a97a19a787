#include "ui/model/recent_paths.h"

#include <utility>

namespace kel::ui {

RecentPaths::RecentPaths(Comparison isSame, const std::vector<std::wstring>& kept)
    : isSame_(isSame) {
    for (auto path = kept.rbegin(); path != kept.rend(); ++path)
        add(*path);
}

void RecentPaths::add(std::wstring path) {
    if (path.empty()) return;
    remove(path);
    paths_.insert(paths_.begin(), std::move(path));
    if (paths_.size() > kMost) paths_.pop_back();
}

void RecentPaths::remove(const std::wstring& path) {
    std::erase_if(paths_, [&](const std::wstring& known) { return isSame_(known, path); });
}

}  // namespace kel::ui
