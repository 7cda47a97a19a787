#pragma once
// The link's firmware uploader as a double.

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "com/connection_point.h"
#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/service/answers.h"

namespace kel::test {

class FakeUploader final
    : public com::Object<FakeUploader, com::Dual<IFirmwareUploader2, IFirmwareUploader>,
                         com::Events<&DIID__IFirmwareUploaderEvents>> {
public:
    static constexpr com::ClassDescription kClass{};

    Answers answers;
    // What happens in the middle of an upload, where anything does.
    std::function<void()> onUpload;
    // Takes one file, and tells nothing.
    bool isPlain = false;

    bool isHeard() const { return events_.hasSinks(); }
    void say(std::wstring_view text) { events_.fire(1, {com::Variant(text)}); }
    void progress(long done, long total) {
        events_.fire(2, {com::Variant(done), com::Variant(total)});
    }
    // Tells those who heard the last upload, also when they have left, and gives their answers.
    std::vector<com::Variant> askFormerSinks(DISPID event, std::wstring_view text) {
        const com::Variant argument(text);
        VARIANTARG borrowed = argument.get();
        DISPPARAMS arguments{&borrowed, nullptr, 1, 0};
        std::vector<com::Variant> told;
        for (const auto& sink : std::exchange(uploadSinks_, {}))
            sink->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &arguments, told.emplace_back().put(),
                         nullptr, nullptr);
        return told;
    }

    STDMETHODIMP Attach(IKelCommunicator*) override { return S_OK; }
    STDMETHODIMP put_PackageFile(VARIANT_BOOL) override { return S_OK; }
    STDMETHODIMP put_CompanionFile(BSTR) override { return S_OK; }
    STDMETHODIMP Upload(BSTR, VARIANT_BOOL, long, long, VARIANT_BOOL* result) override {
        uploadSinks_ = events_.sinks<IDispatch>();
        if (onUpload) onUpload();
        return answers.give("Upload", result);
    }
    STDMETHODIMP Verify(BSTR, VARIANT_BOOL, VARIANT_BOOL* result) override {
        return answers.give("Verify", result);
    }

protected:
    void* findInterface(REFIID iid) override {
        const bool isExtra =
            iid == __uuidof(IFirmwareUploader2) || iid == IID_IConnectionPointContainer;
        return isExtra && isPlain ? nullptr : Object::findInterface(iid);
    }

private:
    std::vector<com::ComPtr<IDispatch>> uploadSinks_;
};

}  // namespace kel::test
