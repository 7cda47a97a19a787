#pragma once
// Letters without regard to their case.

#include <cwctype>

namespace kel::terminal {

inline wchar_t folded(wchar_t character) {
    return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
}

}  // namespace kel::terminal
