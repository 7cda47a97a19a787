#include "bench/instrument/pty.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "bench/instrument/system_error.h"
#include "bench/instrument/transfer.h"

namespace kel::bench {

Pty::Pty(const std::string& link)
    : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)), link_(link) {
    if (!master_ || ::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0) {
        throwSystemError("pseudo-terminal");
    }
    name_ = ::ptsname(master_.get());
    slave_ = FileDescriptor(::open(name_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios mode{};
    if (!slave_ || ::tcgetattr(slave_.get(), &mode) != 0) throwSystemError(name_);
    ::cfmakeraw(&mode);
    ::cfsetspeed(&mode, B9600);
    if (::tcsetattr(slave_.get(), TCSANOW, &mode) != 0) throwSystemError(name_);

    // Wine's server may report the end of a terminal that belongs to no session over and over. It
    // can only belong to ours when we lead one.
    const bool leader = ::getsid(0) == ::getpid();
    if (leader && ::ioctl(slave_.get(), TIOCSCTTY, 0) == 0) {
        // Closing our own terminal would otherwise end us before we are done.
        std::signal(SIGHUP, SIG_IGN);
    }
    createLink();
}

Pty::~Pty() {
    std::error_code ignored;
    const std::filesystem::path link(link_);
    // Only while it is still ours: another instrument may have taken the name over.
    if (!link_.empty() && std::filesystem::read_symlink(link, ignored) == name_) {
        std::filesystem::remove(link, ignored);
    }
}

void Pty::createLink() const {
    if (link_.empty()) return;
    if (std::filesystem::is_symlink(link_)) std::filesystem::remove(link_);
    std::filesystem::create_symlink(name_, link_);
}

LineEvent Pty::receive(std::string& bytes) {
    const auto event = receiveFrom(master_.get(), bytes);
    if (event == LineEvent::kDisconnected) throwSystemError(name_);
    return event;
}

std::size_t Pty::send(std::string_view bytes) {
    return sendTo(master_.get(), bytes);
}

}  // namespace kel::bench
