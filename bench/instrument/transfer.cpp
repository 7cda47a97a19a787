#include "bench/instrument/transfer.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace kel::bench {

namespace {

bool passing(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

LineEvent receiveFrom(int descriptor, std::string& bytes) {
    std::array<char, 4096> buffer;
    const auto count = ::read(descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
        return LineEvent::kBytes;
    }
    return count < 0 && passing(errno) ? LineEvent::kNothing : LineEvent::kDisconnected;
}

std::size_t sendTo(int descriptor, std::string_view bytes) {
    const auto count = ::write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    return passing(errno) ? 0 : bytes.size();
}

}  // namespace kel::bench
