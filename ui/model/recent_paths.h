#pragma once
// The files that were used last.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kel::ui {

// The newest first, at most ten, none twice; capital and small letters are the same in paths.
class RecentPaths {
public:
    static constexpr std::size_t kMost = 10;

    // How the system compares paths.
    using Comparison = bool (*)(std::wstring_view left, std::wstring_view right);

    // Takes what was kept; what is too much or there twice is left out.
    explicit RecentPaths(Comparison isSame, const std::vector<std::wstring>& kept = {});

    // Takes a copy: the path may be one of the list's own.
    void add(std::wstring path);
    void remove(const std::wstring& path);
    const std::vector<std::wstring>& paths() const { return paths_; }

private:
    Comparison isSame_;
    std::vector<std::wstring> paths_;
};

}  // namespace kel::ui
