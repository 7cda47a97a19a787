#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kel::bench {

// What became of a line that was ready for reading.
enum class LineEvent { kNothing, kBytes, kConnected, kDisconnected };

// The instrument's end of a line. Calls never block; failures of the system that leave no line
// to go on with throw std::system_error.
class Line {
public:
    virtual ~Line() = default;

    // How a host reaches the line: a device name or a port number.
    virtual std::string address() const = 0;
    // Readable when receive() has something to tell; changes with every event.
    virtual int descriptor() const = 0;
    virtual bool connected() const = 0;
    // Appends to `bytes` at most a few kilobytes of what has arrived.
    virtual LineEvent receive(std::string& bytes) = 0;
    // How many of the bytes the line took; 0 when it is full.
    virtual std::size_t send(std::string_view bytes) = 0;
};

}  // namespace kel::bench
