#include "bench/link/access/firmware_uploader.h"

#include <algorithm>
#include <optional>

#include "bench/checksum.h"
#include "bench/link/access/dialogue.h"
#include "bench/link/input_file.h"
#include "com/text.h"

namespace kel::bench {
namespace {

constexpr DISPID kStatusText = 1;
constexpr DISPID kProgress = 2;

constexpr std::size_t kWritten = 64;
constexpr std::size_t kRead = 1024;
constexpr int kAttempts = 3;
constexpr wchar_t kFirmwareFile[] = L"firmware";

// Ends a transfer, with a status text.
struct Refused {
    std::wstring text;
};

// The line at another rate, until the end.
class LineRate {
public:
    LineRate(QuietPort& port, long rate) : port_(port), before_(port.baudRate()) {
        port.setBaudRate(rate);
    }
    ~LineRate() {
        try {
            port_.setBaudRate(before_);
        } catch (const com::Error&) {
            // A line that does not take it is lost anyhow.
        }
    }
    LineRate(const LineRate&) = delete;
    LineRate& operator=(const LineRate&) = delete;

private:
    QuietPort& port_;
    long before_;
};

std::string writeCommand(std::uint32_t address, std::string_view bytes) {
    std::string command = "firmware write " + hexadecimal(address, 8) + " ";
    unsigned sum = 0;
    for (const char byte : bytes) {
        command += hexadecimal(static_cast<unsigned char>(byte), 2);
        sum += static_cast<unsigned char>(byte);
    }
    return command + hexadecimal((256 - sum % 256) % 256, 2);
}

// Asks for something that is answered by OK. What was damaged on its way is sent again.
void demand(Dialogue& dialogue, const std::string& command) {
    std::string answer;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        answer = dialogue.ask(command);
        if (answer == "OK") return;
        if (answer != "ERROR: wrong sum") break;
    }
    throw Refused{L"The instrument refuses the firmware: " + com::widen(answer)};
}

// Calls a function with each piece of an image.
template <class Work>
void forPieces(const FirmwareImage& image, std::size_t length, Work&& work) {
    for (const FirmwareSegment& segment : image) {
        for (std::size_t at = 0; at < segment.bytes.size(); at += length) {
            work(segment.address + static_cast<std::uint32_t>(at),
                 std::string_view(segment.bytes).substr(at, length));
        }
    }
}

}  // namespace

HRESULT FirmwareUploader::put_PackageFile(VARIANT_BOOL package) {
    return operation([&] { isPackage_ = com::isTrue(package); });
}

HRESULT FirmwareUploader::put_CompanionFile(BSTR path) {
    return operation([&] { companion_ = com::view(path); });
}

HRESULT FirmwareUploader::Upload(BSTR path, VARIANT_BOOL hexadecimal, long baudRate,
                                 long accessCode, VARIANT_BOOL* result) {
    return transfer(result, [&] {
        if (baudRate <= 0) throw com::Error(E_INVALIDARG, L"A line rate is above zero");
        const auto parts = readParts(std::wstring(com::view(path)), com::isTrue(hexadecimal));
        QuietPort port(link().Get(), home());
        load(port, parts, baudRate, accessCode);
        say(L"The firmware is loaded");
    });
}

HRESULT FirmwareUploader::Verify(BSTR path, VARIANT_BOOL hexadecimal, VARIANT_BOOL* result) {
    return transfer(result, [&] {
        const auto parts = readParts(std::wstring(com::view(path)), com::isTrue(hexadecimal));
        QuietPort port(link().Get(), home());
        Dialogue dialogue(port);
        say(L"Comparing the firmware...");
        begin(parts);
        for (const Part& part : parts)
            compare(dialogue, part);
        say(L"The firmware is as in the file");
    });
}

template <class Body>
HRESULT FirmwareUploader::transfer(VARIANT_BOOL* result, Body&& body) noexcept {
    return dialogue(result, [&] {
        try {
            body();
            return true;
        } catch (const Refused& refusal) {
            say(refusal.text);
        } catch (const NoAnswer& failure) {
            say(failure.description());
        }
        return false;
    });
}

std::vector<FirmwareUploader::Part> FirmwareUploader::readParts(const std::wstring& path,
                                                                bool isHexadecimal) {
    const auto read = [](const std::wstring& file, FirmwareImage (*reader)(std::string_view)) {
        try {
            return reader(readFile(file, kFirmwareFile));
        } catch (const FirmwareFileError& error) {
            throw Refused{L"The firmware file '" + file + L"' is broken: " +
                          com::widen(error.what())};
        } catch (const com::Error& error) {
            throw Refused{error.description()};
        }
    };
    std::vector<Part> parts;
    parts.push_back({"main", read(path, isPackage_      ? readPackage
                                        : isHexadecimal ? readIntelHex
                                                        : readBinary)});
    if (!companion_.empty()) parts.push_back({"companion", read(companion_, readAny)});
    return parts;
}

void FirmwareUploader::load(QuietPort& port, const std::vector<Part>& parts, long baudRate,
                            long accessCode) {
    VARIANT_BOOL radio = VARIANT_FALSE;
    com::check(link()->get_RadioConnection(&radio), link());
    Dialogue dialogue(port);
    say(L"Loading the firmware...");
    begin(parts);
    for (const Part& part : parts) {
        demand(dialogue, std::string("firmware begin ") + part.bank + " " +
                             std::to_string(accessCode) + " " + std::to_string(baudRate));
        std::optional<LineRate> rate;
        if (!com::isTrue(radio)) rate.emplace(port, baudRate);
        loadImage(dialogue, part.image);
    }
}

void FirmwareUploader::loadImage(Dialogue& dialogue, const FirmwareImage& image) {
    std::uint32_t checksum = 0;
    forPieces(image, kWritten, [&](std::uint32_t address, std::string_view bytes) {
        demand(dialogue, writeCommand(address, bytes));
        checksum = crc32(bytes, checksum);
        proceed(bytes.size());
    });
    demand(dialogue, "firmware end " + hexadecimal(checksum, 8));
}

void FirmwareUploader::compare(Dialogue& dialogue, const Part& part) {
    forPieces(part.image, kRead, [&](std::uint32_t address, std::string_view bytes) {
        const std::string command = std::string("firmware read ") + part.bank + " " +
                                    hexadecimal(address, 8) + " " + std::to_string(bytes.size());
        std::optional<std::string> there;
        for (int attempt = 0; !there && attempt < kAttempts; ++attempt)
            there = dialogue.askForBlock(command);
        if (!there || there->size() != bytes.size()) {
            throw Refused{L"The instrument does not show its firmware"};
        }
        const auto [differs, in] = std::mismatch(bytes.begin(), bytes.end(), there->begin());
        if (differs != bytes.end()) {
            const auto place = address + static_cast<std::uint32_t>(differs - bytes.begin());
            throw Refused{L"The firmware differs from the file at address " +
                          com::widen(hexadecimal(place, 8))};
        }
        proceed(bytes.size());
    });
}

void FirmwareUploader::say(std::wstring_view text) {
    events_.fire(kStatusText, {com::Variant(text)});
}

void FirmwareUploader::begin(const std::vector<Part>& parts) {
    total_ = 0;
    done_ = 0;
    for (const Part& part : parts)
        total_ += static_cast<long>(sizeOf(part.image));
    proceed(0);
}

void FirmwareUploader::proceed(std::size_t bytes) {
    done_ += static_cast<long>(bytes);
    events_.fire(kProgress, {com::Variant(done_), com::Variant(total_)});
}

}  // namespace kel::bench
