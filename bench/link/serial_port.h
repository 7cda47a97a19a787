#pragma once
// A serial port as a transport.

#include <string>
#include <string_view>

#include "bench/link/transport.h"
#include "com/handles.h"

namespace kel::bench {

// The handle is a plain one whose reads never wait: overlapped reads do not complete everywhere.
class SerialPort final : public Transport {
public:
    // Opens a port with 8 data bits, no parity and one stop bit; one that is open is closed first.
    // Gives the error code of the platform, 0 for success.
    DWORD open(std::wstring_view name, long baudRate);

    // True also for a port that somebody else uses.
    static bool exists(std::wstring_view name);

    // False when a setting is unknown or the port refuses it; the settings then stay as they were.
    bool setLine(const std::wstring& parity, long dataBits, long stopBits);

    bool isOpen() const override { return static_cast<bool>(device_); }
    void close() override;
    bool receive(std::string& bytes) override;
    std::size_t send(std::string_view bytes) override;
    void holdBreak(bool on) override;
    long baudRate() const override;
    void setBaudRate(long rate) override;
    std::wstring address() const override;
    std::wstring description() const override;

private:
    DCB state() const;

    com::FileHandle device_;
    std::wstring name_;
    // Not every driver tells its settings truly when it is asked.
    std::wstring parity_;
    long dataBits_ = 0;
    long stopBits_ = 0;
};

}  // namespace kel::bench
