#include "bench/link/serial_port.h"

#include <algorithm>
#include <iterator>

#include "com/error.h"
#include "com/text.h"

namespace kel::bench {
namespace {

// How long a write may wait for a full line, in milliseconds.
constexpr DWORD kWriteSlice = 20;
constexpr std::size_t kReadSize = 4096;
// A write must fit its slice at every usual rate, or a slow line would be held up for long.
constexpr std::size_t kWriteSize = 256;

struct Parity {
    const wchar_t* name;
    BYTE value;
};

constexpr Parity kParities[] = {{L"NONE", NOPARITY},
                                {L"ODD", ODDPARITY},
                                {L"EVEN", EVENPARITY},
                                {L"MARK", MARKPARITY},
                                {L"SPACE", SPACEPARITY}};

const Parity* findParity(const std::wstring& name) {
    const auto* found =
        std::find_if(std::begin(kParities), std::end(kParities),
                     [&](const Parity& parity) { return com::sameName(parity.name, name); });
    return found == std::end(kParities) ? nullptr : found;
}

std::wstring_view withoutColon(std::wstring_view name) {
    if (!name.empty() && name.back() == L':') name.remove_suffix(1);
    return name;
}

// Opens the device; the last error tells of a failure. Nothing but the name of a device is taken:
// the prefix would open any file.
com::FileHandle openDevice(std::wstring_view name) {
    if (name.empty() || name.find_first_of(L"\\/:") != name.npos) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return {};
    }
    const std::wstring path = L"\\\\.\\" + std::wstring(name);
    return com::FileHandle(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                       OPEN_EXISTING, 0, nullptr));
}

DCB initialState(const DCB& present, long baudRate) {
    DCB state = present;
    state.BaudRate = static_cast<DWORD>(baudRate);
    state.ByteSize = 8;
    state.Parity = NOPARITY;
    state.StopBits = ONESTOPBIT;
    state.fBinary = TRUE;
    state.fParity = FALSE;
    state.fOutxCtsFlow = FALSE;
    state.fOutxDsrFlow = FALSE;
    state.fDsrSensitivity = FALSE;
    state.fOutX = FALSE;
    state.fInX = FALSE;
    state.fNull = FALSE;
    state.fErrorChar = FALSE;
    state.fAbortOnError = FALSE;
    state.fDtrControl = DTR_CONTROL_ENABLE;
    state.fRtsControl = RTS_CONTROL_ENABLE;
    return state;
}

bool prepare(HANDLE device, long baudRate) {
    DCB state{};
    state.DCBlength = sizeof state;
    if (!GetCommState(device, &state)) return false;
    state = initialState(state, baudRate);
    if (!SetCommState(device, &state)) return false;

    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.WriteTotalTimeoutConstant = kWriteSlice;
    return SetCommTimeouts(device, &timeouts) && PurgeComm(device, PURGE_RXCLEAR | PURGE_TXCLEAR);
}

}  // namespace

DWORD SerialPort::open(std::wstring_view name, long baudRate) {
    close();
    const std::wstring_view bare = withoutColon(name);
    com::FileHandle device = openDevice(bare);
    if (!device || !prepare(device.get(), baudRate)) return GetLastError();
    device_ = std::move(device);
    name_ = bare;
    parity_ = L"NONE";
    dataBits_ = 8;
    stopBits_ = 1;
    return ERROR_SUCCESS;
}

bool SerialPort::exists(std::wstring_view name) {
    if (openDevice(withoutColon(name))) return true;
    const DWORD error = GetLastError();
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
           error == ERROR_LOCK_VIOLATION;
}

bool SerialPort::setLine(const std::wstring& parity, long dataBits, long stopBits) {
    const Parity* known = findParity(parity);
    const bool valid = known && dataBits >= 5 && dataBits <= 8 && stopBits >= 1 && stopBits <= 2;
    if (!isOpen() || !valid) return false;

    DCB wanted = state();
    wanted.Parity = known->value;
    wanted.fParity = known->value != NOPARITY;
    wanted.ByteSize = static_cast<BYTE>(dataBits);
    wanted.StopBits = stopBits == 1 ? ONESTOPBIT : TWOSTOPBITS;
    if (!SetCommState(device_.get(), &wanted)) return false;
    parity_ = known->name;
    dataBits_ = dataBits;
    stopBits_ = stopBits;
    return true;
}

void SerialPort::close() {
    device_ = com::FileHandle();
    name_.clear();
}

bool SerialPort::receive(std::string& bytes) {
    if (!isOpen()) return false;
    char buffer[kReadSize];
    DWORD count = 0;
    const bool read = ReadFile(device_.get(), buffer, sizeof buffer, &count, nullptr);
    if (read && count > 0) {
        bytes.append(buffer, count);
        return true;
    }
    // A device that has gone reads like an empty one, but no longer tells its state.
    DWORD errors = 0;
    if (!read || !ClearCommError(device_.get(), &errors, nullptr)) close();
    return false;
}

std::size_t SerialPort::send(std::string_view bytes) {
    if (!isOpen()) return 0;
    DWORD count = 0;
    const DWORD size = static_cast<DWORD>(std::min(bytes.size(), kWriteSize));
    if (!WriteFile(device_.get(), bytes.data(), size, &count, nullptr)) close();
    return count;
}

void SerialPort::holdBreak(bool on) {
    if (!isOpen()) return;
    if (on ? SetCommBreak(device_.get()) : ClearCommBreak(device_.get())) return;
    const com::Error failure = com::lastError();
    // Lines that are not real ones have no break state.
    if (failure.code() == HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED)) return;
    if (failure.code() == HRESULT_FROM_WIN32(ERROR_INVALID_FUNCTION)) return;
    throw failure;
}

DCB SerialPort::state() const {
    DCB state{};
    state.DCBlength = sizeof state;
    if (!GetCommState(device_.get(), &state)) throw com::lastError();
    return state;
}

long SerialPort::baudRate() const {
    if (!isOpen()) throw com::Error(E_FAIL, L"The serial port is not open");
    return static_cast<long>(state().BaudRate);
}

void SerialPort::setBaudRate(long rate) {
    if (!isOpen()) throw com::Error(E_FAIL, L"The serial port is not open");
    DCB wanted = state();
    wanted.BaudRate = static_cast<DWORD>(rate);
    if (!SetCommState(device_.get(), &wanted)) throw com::lastError();
}

std::wstring SerialPort::address() const {
    return isOpen() ? name_ + L":" : std::wstring();
}

std::wstring SerialPort::description() const {
    return address() + L" " + std::to_wstring(baudRate()) + L" baud, parity " + parity_ + L", " +
           std::to_wstring(dataBits_) + L" data bits, " + std::to_wstring(stopBits_) +
           (stopBits_ == 1 ? L" stop bit" : L" stop bits");
}

}  // namespace kel::bench
