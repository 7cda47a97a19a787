#include "bench/link/serial_stream.h"

namespace kel::bench {

HRESULT SerialStream::OpenPort(BSTR port, long baudRate, VARIANT_BOOL* result) {
    DWORD error = ERROR_SUCCESS;
    const HRESULT code = operation([&] {
        com::out(result) = VARIANT_FALSE;
        if (baudRate <= 0) throw com::Error(E_INVALIDARG, L"A baud rate is above zero");
        stream_.close();
        error = port_.open(com::view(port), baudRate);
        *result = com::variantBool(error == ERROR_SUCCESS);
    });
    // Callers read the reason here; nothing may come in between.
    SetLastError(error);
    return code;
}

HRESULT SerialStream::PortExists(BSTR port, VARIANT_BOOL* exists) {
    return operation([&] {
        com::out(exists) = VARIANT_FALSE;
        *exists = com::variantBool(SerialPort::exists(com::view(port)));
    });
}

HRESULT SerialStream::SetLineSettings(BSTR parity, long dataBits, long stopBits,
                                      VARIANT_BOOL* result) {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        *result =
            com::variantBool(port_.setLine(std::wstring(com::view(parity)), dataBits, stopBits));
    });
}

}  // namespace kel::bench
