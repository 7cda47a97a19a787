#pragma once
// The instrument's recorder as a double: a card with files, scripted operations.

#include <atomic>
#include <functional>
#include <vector>

#include "bench/link/access/recorder_file.h"
#include "com/connection_point.h"
#include "com/object.h"
#include "tests/wine/service/answers.h"

namespace kel::test {

// Where it is agile, on any thread.
class FakeRecorder final : public com::Object<FakeRecorder, com::Dual<IRecorderAccess>,
                                              com::Events<&DIID__IRecorderAccessEvents>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit FakeRecorder(bool isAgile) : isAgile_(isAgile) {}

    std::vector<bench::CardEntry> files;
    // Also "used" and "capacity".
    Answers answers;
    // What Download and Format do, and answer.
    std::function<bool()> operation = [] { return true; };
    std::atomic<bool> isAborted = false;

    // What happens, told from inside an operation. The answer is true or false, or nothing.
    com::Variant fire(DISPID event, std::vector<com::Variant> arguments = {});
    // A little of the time that an operation takes; false when it is to end.
    bool work() const;

    STDMETHODIMP get_CardPresent(VARIANT_BOOL* present) override {
        return answers.give("CardPresent", present);
    }
    STDMETHODIMP get_Rate(long* rate) override { return answers.give("Rate", rate); }
    STDMETHODIMP ReadListing(ICollection** listing) override;
    STDMETHODIMP SelectFile(BSTR) override { return S_OK; }
    STDMETHODIMP Download(ICollection*, BSTR, VARIANT_BOOL* result) override {
        return operate(result);
    }
    STDMETHODIMP CardSpace(LONGLONG* used, LONGLONG* capacity) override {
        return answers.give("used", used), answers.give("capacity", capacity);
    }
    STDMETHODIMP Format(VARIANT_BOOL* result) override { return operate(result); }
    STDMETHODIMP SetRate(long) override { return S_OK; }
    STDMETHODIMP Abort() override { return isAborted = true, S_OK; }
    STDMETHODIMP get_Running(VARIANT_BOOL* running) override {
        return answers.give("Running", running);
    }
    STDMETHODIMP SetLinkRate(long) override { return S_OK; }

private:
    HRESULT operate(VARIANT_BOOL* result);
    void* findInterface(REFIID iid) override;
    HRESULT findElsewhere(REFIID iid, void** result) override;

    const bool isAgile_;
};

// A collection as the link makes them; the agile kind may be read on any thread.
com::ComPtr<IUnknown> makeCollection(bool isAgile);

}  // namespace kel::test
