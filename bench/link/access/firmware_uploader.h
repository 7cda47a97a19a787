#pragma once
// Loads firmware.

#include <string>
#include <vector>

#include "bench/link/access/access_object.h"
#include "bench/link/model/firmware_file.h"
#include "com/connection_point.h"

namespace kel::bench {

class Dialogue;

// A package file is known by PackageFile, whatever is said of its form; the companion file by how
// it begins. Nothing is sent before all files have been read and found whole. How it went is told
// as a status text also where the result is false.
class FirmwareUploader final : public AccessObject<FirmwareUploader, IFirmwareUploader2,
                                                   com::Dual<IFirmwareUploader2, IFirmwareUploader>,
                                                   com::Events<&DIID__IFirmwareUploaderEvents>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.FirmwareUploader.1"};

    STDMETHODIMP put_PackageFile(VARIANT_BOOL package) override;
    // The line runs at the rate for as long as bytes are loaded, unless a radio is in it.
    STDMETHODIMP Upload(BSTR path, VARIANT_BOOL hexadecimal, long baudRate, long accessCode,
                        VARIANT_BOOL* result) override;
    STDMETHODIMP Verify(BSTR path, VARIANT_BOOL hexadecimal, VARIANT_BOOL* result) override;
    STDMETHODIMP put_CompanionFile(BSTR path) override;

private:
    // What goes into one bank of the instrument's memory.
    struct Part {
        const char* bank;
        FirmwareImage image;
    };

    template <class Body>
    HRESULT transfer(VARIANT_BOOL* result, Body&& body) noexcept;
    std::vector<Part> readParts(const std::wstring& path, bool isHexadecimal);
    void load(QuietPort& port, const std::vector<Part>& parts, long baudRate, long accessCode);
    void loadImage(Dialogue& dialogue, const FirmwareImage& image);
    void compare(Dialogue& dialogue, const Part& part);
    void say(std::wstring_view text);
    void begin(const std::vector<Part>& parts);
    void proceed(std::size_t bytes);

    bool isPackage_ = false;
    std::wstring companion_;
    long done_ = 0;
    long total_ = 0;
};

}  // namespace kel::bench
