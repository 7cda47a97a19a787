#pragma once
// The link's firmware uploader as a double, which tells what it does in the log of the link.

#include <functional>
#include <string>
#include <vector>

#include "com/connection_point.h"
#include "com/object.h"
#include "com/text.h"
#include "com/variant.h"
#include "tests/wine/support/fake_link.h"

namespace kel::test {

class FakeUploader final
    : public com::Object<FakeUploader, com::Dual<IFirmwareUploader2, IFirmwareUploader>,
                         com::Events<&DIID__IFirmwareUploaderEvents>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit FakeUploader(FakeLink& link) : link_(link) {}

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
    // To those who heard the last upload, also when they have left.
    void sayToFormerSinks(std::wstring_view text) {
        const com::Variant argument(text);
        VARIANTARG borrowed = argument.get();
        DISPPARAMS arguments{&borrowed, nullptr, 1, 0};
        for (const auto& sink : std::exchange(uploadSinks_, {}))
            sink->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &arguments, nullptr, nullptr, nullptr);
    }

    STDMETHODIMP Attach(IKelCommunicator* communicator) override {
        return tell(communicator == link_.communicator() ? "Attach" : "Attach foreign");
    }
    STDMETHODIMP put_PackageFile(VARIANT_BOOL package) override {
        return tell("PackageFile = " + std::to_string(package));
    }
    STDMETHODIMP put_CompanionFile(BSTR path) override {
        return tell("CompanionFile = " + com::narrow(path));
    }
    STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        const HRESULT code = tell("Advise");
        return FAILED(code) ? code : Events::FindConnectionPoint(iid, point);
    }
    STDMETHODIMP Upload(BSTR path, VARIANT_BOOL hexadecimal, long baudRate, long accessCode,
                        VARIANT_BOOL* result) override {
        return tell("Upload " + com::narrow(path) + " " + std::to_string(hexadecimal) + " " +
                        std::to_string(baudRate) + " " + std::to_string(accessCode),
                    [&] {
                        uploadSinks_ = events_.sinks<IDispatch>();
                        *result = onUpload() ? 1 : 0;
                    });
    }
    STDMETHODIMP Verify(BSTR path, VARIANT_BOOL hexadecimal, VARIANT_BOOL* result) override {
        return tell("Verify " + com::narrow(path) + " " + std::to_string(hexadecimal),
                    [&] { *result = onVerify() ? 1 : 0; });
    }

protected:
    void* findInterface(REFIID iid) override {
        const bool isExtra =
            iid == __uuidof(IFirmwareUploader2) || iid == IID_IConnectionPointContainer;
        return isExtra && isPlain ? nullptr : Object::findInterface(iid);
    }

private:
    HRESULT tell(
        const std::string& call, const std::function<void()>& answer = [] {}) {
        return com::guard(__uuidof(IFirmwareUploader), L"FakeUploader", [&] {
            link_.calls.push_back(call);
            if (link_.onCall) link_.onCall(call);
            answer();
        });
    }

    FakeLink& link_;
    std::vector<com::ComPtr<IDispatch>> uploadSinks_;
};

}  // namespace kel::test
