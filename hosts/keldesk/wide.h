#pragma once
// The texts of the portable parts, for windows.

#include <string>
#include <string_view>

#include "com/text.h"

namespace kel::keldesk {

inline std::wstring wide(std::string_view utf8) {
    return com::widen(utf8, CP_UTF8);
}

}  // namespace kel::keldesk
