#pragma once
// The link's stream over a serial port.

#include "bench/link/serial_port.h"
#include "bench/link/stream_object.h"

namespace kel::bench {

class SerialStream final : public StreamObject<SerialStream, ISerialStream, SerialPort> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.SerialStream.1"};

    // A port that is open is closed, also when the new one does not open.
    STDMETHODIMP OpenPort(BSTR port, long baudRate, VARIANT_BOOL* result) override;
    STDMETHODIMP PortExists(BSTR port, VARIANT_BOOL* exists) override;
    STDMETHODIMP SetLineSettings(BSTR parity, long dataBits, long stopBits,
                                 VARIANT_BOOL* result) override;
};

}  // namespace kel::bench
