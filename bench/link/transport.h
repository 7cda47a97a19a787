#pragma once
// What a stream needs of the connection below it.

#include <cstddef>
#include <string>
#include <string_view>

namespace kel::bench {

// One connection, open or closed. No member waits for the other side for longer than a few
// milliseconds. A connection whose other side has vanished closes itself.
class Transport {
public:
    virtual ~Transport() = default;

    virtual bool isOpen() const = 0;
    virtual void close() = 0;

    // Appends some of what has arrived. False when there is nothing more for now.
    virtual bool receive(std::string& bytes) = 0;

    // Gives the number of bytes that the connection took; 0 while it is full.
    virtual std::size_t send(std::string_view bytes) = 0;

    // Begins or ends the break state of the line; nothing where the line has no such state.
    virtual void holdBreak(bool on) = 0;

    // Bits a second. A line that has no rate remembers what it is told. Both throw com::Error.
    virtual long baudRate() const = 0;
    virtual void setBaudRate(long rate) = 0;

    // What it is connected to, COM3: or 127.0.0.1:4444; empty when closed.
    virtual std::wstring address() const = 0;

    // The same with the settings of the line, for people.
    virtual std::wstring description() const = 0;
};

}  // namespace kel::bench
