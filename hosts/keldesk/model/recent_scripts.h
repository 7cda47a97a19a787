#pragma once
// The scripts that were run last.

#include <cstddef>
#include <string>
#include <vector>

namespace kel::keldesk {

// The newest first, at most ten, none twice; capital and small letters are the same in paths.
class RecentScripts {
public:
    static constexpr std::size_t kMost = 10;

    // Takes what was kept; what is too much or there twice is left out.
    explicit RecentScripts(const std::vector<std::wstring>& kept = {});

    void add(const std::wstring& path);
    void remove(const std::wstring& path);
    const std::vector<std::wstring>& paths() const { return paths_; }

private:
    std::vector<std::wstring> paths_;
};

// What stands in the menu for an entry, from 0: its number as a mnemonic, and a path that is not
// too long.
std::wstring menuText(std::size_t index, const std::wstring& path);

}  // namespace kel::keldesk
