#include "ui/model/recent_paths.h"

namespace kel::ui {

RecentPaths::RecentPaths(Comparison isSame, const std::vector<std::wstring>& kept)
    : isSame_(isSame) {
    for (auto path = kept.rbegin(); path != kept.rend(); ++path)
        add(*path);
}

// A copy: the path may be one of the list's own.
void RecentPaths::add(const std::wstring& path) {
    if (path.empty()) return;
    const std::wstring added = path;
    remove(added);
    paths_.insert(paths_.begin(), added);
    if (paths_.size() > kMost) paths_.pop_back();
}

void RecentPaths::remove(const std::wstring& path) {
    std::erase_if(paths_, [&](const std::wstring& known) { return isSame_(known, path); });
}

}  // namespace kel::ui
