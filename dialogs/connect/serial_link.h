#pragma once
// The serial side of the instrument link: its ports, and the change from one to another.

#include <optional>
#include <string>

#include "com/error.h"
#include "interfaces/KelUtils.h"

namespace kel::connect {

// How the two forms of the dialog differ in what they ask of the link.
struct SerialRules {
    // The rate of a port that is connected already is put in any case, or only where it differs.
    bool putsSameRate = true;
};

// Every member throws com::Error when the link fails.
class SerialLink {
public:
    explicit SerialLink(com::ComPtr<IKelCommunicator> link) : link_(std::move(link)) {}

    // Makes the stream that is to be connected. Where the link's library has none, all that needs
    // it fails with E_POINTER later.
    void createStream();
    // Throws where there is none.
    void requireStream() const { stream(); }

    // The name of the link's port, as it is shown; empty where it has none.
    std::wstring currentPort() const;
    // Only where it is open.
    std::optional<long> currentRate() const;
    // True when the link's port is a serial one that is open.
    bool hasOpenSerialPort() const;

    bool exists(const std::wstring& port) const;
    // Opens a port at the default rate and closes it at once.
    bool opens(const std::wstring& port) const;

    bool isCurrent(const std::wstring& port) const;
    // Changes only the rate of the port that is connected.
    void setRate(long rate, const SerialRules& rules);
    // Opens a port and puts it in the place of the link's present one, which is closed then. Gives
    // the operating system's error when the port does not open, ERROR_CANCELLED when the user gave
    // up, and nothing when all went well.
    std::optional<DWORD> connect(const std::wstring& port, long rate);

    // Nothing is connected any more, also where it is called in the middle of connect().
    void giveUp() noexcept { isGivenUp_ = true; }

private:
    const com::ComPtr<ISerialStream>& stream() const;

    com::ComPtr<IKelCommunicator> link_;
    com::ComPtr<ISerialStream> stream_;
    bool isGivenUp_ = false;
};

}  // namespace kel::connect
