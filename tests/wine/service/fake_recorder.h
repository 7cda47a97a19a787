#pragma once
// The instrument's recorder as a double: files, a log of calls, scripted operations.

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "com/connection_point.h"
#include "com/object.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

struct RecorderFile {
    std::wstring name;
    LONGLONG size = 0;
    DATE time = 0;
};

// Where it is agile, on any thread.
class FakeRecorder final : public com::Object<FakeRecorder, com::Dual<IRecorderAccess>,
                                              com::Events<&DIID__IRecorderAccessEvents>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit FakeRecorder(bool isAgile) : isAgile_(isAgile) {}
    void finalConstruct();

    std::vector<RecorderFile> files;
    LONGLONG used = 0;
    LONGLONG capacity = 0;

    // Called inside each call before it is answered. The call fails as it throws.
    std::function<void(const std::string& call)> onCall = [](const std::string&) {};
    // What Download and Format do, and answer.
    std::function<bool()> operation = [] { return true; };
    std::atomic<bool> isAborted = false;

    // What happens, told from inside an operation. The answer is true or false, or nothing.
    com::Variant fire(DISPID event, std::vector<com::Variant> arguments = {});
    // A little of the time that an operation takes; false when it is to end.
    bool work() const;

    STDMETHODIMP get_CardPresent(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Rate(long*) override { return E_NOTIMPL; }
    STDMETHODIMP ReadListing(ICollection** listing) override;
    STDMETHODIMP SelectFile(BSTR name) override;
    STDMETHODIMP Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) override;
    STDMETHODIMP CardSpace(LONGLONG* usedBytes, LONGLONG* allBytes) override;
    STDMETHODIMP Format(VARIANT_BOOL* result) override;
    STDMETHODIMP SetRate(long rate) override;
    STDMETHODIMP Abort() override;
    STDMETHODIMP get_Running(VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP SetLinkRate(long rate) override;

private:
    template <class Answer>
    HRESULT call(const std::string& text, Answer&& answer) {
        return this->template guarded<IRecorderAccess>([&] {
            onCall(text);
            answer();
        });
    }
    void* findInterface(REFIID iid) override;
    HRESULT findElsewhere(REFIID iid, void** result) override;

    const bool isAgile_;
    com::ComPtr<IUnknown> marshaler_;
};

// A collection as the link makes them; the agile kind may be read on any thread.
com::ComPtr<IUnknown> makeCollection(bool isAgile);

}  // namespace kel::test
