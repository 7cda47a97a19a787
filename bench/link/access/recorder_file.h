#pragma once
// A file of the recorder, as its listing tells of it.

#include "bench/link/model/card_listing.h"
#include "com/object.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

// Never changes.
class RecorderFile final : public com::Object<RecorderFile, com::Dual<IRecorderFile>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.RecorderFile.1"};

    explicit RecorderFile(const CardEntry& entry)
        : name_(std::string_view(entry.name)), size_(entry.size) {
        const auto part = [](int number) { return static_cast<WORD>(number); };
        SYSTEMTIME time{
            part(entry.year),   part(entry.month),  0, part(entry.day), part(entry.hour),
            part(entry.minute), part(entry.second), 0};
        if (!SystemTimeToVariantTime(&time, &time_)) time_ = 0;
    }

    STDMETHODIMP get_Name(BSTR* name) override {
        return guarded<IRecorderFile>([&] {
            com::out(name) = nullptr;
            *name = com::Bstr(name_).release();
        });
    }
    STDMETHODIMP get_Size(LONGLONG* size) override {
        return guarded<IRecorderFile>([&] { com::out(size) = size_; });
    }
    STDMETHODIMP get_Time(DATE* time) override {
        return guarded<IRecorderFile>([&] { com::out(time) = time_; });
    }

private:
    const com::Bstr name_;
    const LONGLONG size_;
    DATE time_ = 0;
};

}  // namespace kel::bench
