#pragma once
// The link's firmware uploader as a double.

#include <functional>
#include <vector>

#include "com/connection_point.h"
#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

class FakeUploader final
    : public com::Object<FakeUploader, com::Dual<IFirmwareUploader2, IFirmwareUploader>,
                         com::Events<&DIID__IFirmwareUploaderEvents>> {
public:
    static constexpr com::ClassDescription kClass{};

    // What happens in the middle of an upload or a verification, and its answer.
    std::function<bool()> onUpload = [] { return true; };
    std::function<bool()> onVerify = [] { return true; };
    // Takes one file, and tells nothing.
    bool isPlain = false;

    void say(std::wstring_view text) { events_.fire(1, {com::Variant(text)}); }
    void progress(long done, long total) {
        events_.fire(2, {com::Variant(done), com::Variant(total)});
    }
    bool isHeard() const { return events_.hasSinks(); }
    // Tells those who heard the last upload, also when they have left, and gives their answers.
    std::vector<com::Variant> askFormerSinks(DISPID event, std::wstring_view text) {
        const com::Variant argument(text);
        VARIANTARG borrowed = argument.get();
        DISPPARAMS arguments{&borrowed, nullptr, 1, 0};
        std::vector<com::Variant> answers;
        for (const auto& sink : std::exchange(uploadSinks_, {}))
            sink->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &arguments,
                         answers.emplace_back().put(), nullptr, nullptr);
        return answers;
    }

    STDMETHODIMP Attach(IKelCommunicator*) override { return S_OK; }
    STDMETHODIMP put_PackageFile(VARIANT_BOOL) override { return S_OK; }
    STDMETHODIMP put_CompanionFile(BSTR) override { return S_OK; }
    STDMETHODIMP Upload(BSTR, VARIANT_BOOL, long, long, VARIANT_BOOL* result) override {
        uploadSinks_ = events_.sinks<IDispatch>();
        return *result = onUpload() ? 1 : 0, S_OK;
    }
    STDMETHODIMP Verify(BSTR, VARIANT_BOOL, VARIANT_BOOL* result) override {
        return *result = onVerify() ? 1 : 0, S_OK;
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
