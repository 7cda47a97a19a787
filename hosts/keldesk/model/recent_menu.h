#pragma once
// The scripts that were run last, in the menu.

#include <cstddef>
#include <string>

namespace kel::keldesk {

// What stands in the menu for an entry, from 0: its number as a mnemonic, and a path that is not
// too long.
std::wstring menuText(std::size_t index, const std::wstring& path);

}  // namespace kel::keldesk
