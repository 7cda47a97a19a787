#pragma once

#include <string>

#include "bench/instrument/file_descriptor.h"
#include "bench/instrument/line.h"

namespace kel::bench {

// A pseudo-terminal in raw mode that hosts open like a serial port. The host's end is kept open
// here as well, so that a host may close and reopen its port; for the same reason the instrument
// does not learn of either. A break that a host sends is lost in a pseudo-terminal.
class Pty : public Line {
public:
    // A symbolic link to the device is kept at `link` unless that is empty; a link that is already
    // there is replaced, anything else is a failure. Throws std::system_error.
    explicit Pty(const std::string& link);
    ~Pty() override;
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    std::string address() const override { return name_; }
    int descriptor() const override { return master_.get(); }
    bool connected() const override { return true; }
    LineEvent receive(std::string& bytes) override;
    std::size_t send(std::string_view bytes) override;

private:
    void createLink() const;

    FileDescriptor master_;
    FileDescriptor slave_;
    std::string name_;
    std::string link_;
};

}  // namespace kel::bench
