#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace kel::bench {

// The failure of the system call that has just set errno.
[[noreturn]] inline void throwSystemError(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace kel::bench
