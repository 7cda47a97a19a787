#pragma once
// The wrapper of the access to the recorder's card, which a communicator is asked for.

#include <atomic>
#include <mutex>

#include "hosts/trace/downloaded_files.h"
#include "hosts/trace/event_source.h"
#include "hosts/trace/kinds.h"
#include "hosts/trace/traced.h"

namespace kel::trace {

// Calls and events stay on the threads on which they come. The recorder works with the inner
// communicator and reads inner collections, so that only what comes of its work is told.
class RecorderAccess final : public MobileTraced<RecorderAccess, IRecorderAccess> {
public:
    using MobileTraced::MobileTraced;

    STDMETHODIMP get_CardPresent(VARIANT_BOOL* present) override {
        return call<&IRecorderAccess::get_CardPresent>("get_CardPresent", present);
    }
    STDMETHODIMP get_Rate(long* rate) override {
        return call<&IRecorderAccess::get_Rate>("get_Rate", rate);
    }
    STDMETHODIMP ReadListing(ICollection** files) override;
    STDMETHODIMP SelectFile(BSTR name) override {
        return call<&IRecorderAccess::SelectFile>("SelectFile", name);
    }
    // The selection is told by the names of its files.
    STDMETHODIMP Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) override;
    STDMETHODIMP CardSpace(LONGLONG* used, LONGLONG* capacity) override {
        return call<&IRecorderAccess::CardSpace>("CardSpace", used, capacity);
    }
    STDMETHODIMP Format(VARIANT_BOOL* result) override;
    STDMETHODIMP SetRate(long rate) override {
        return call<&IRecorderAccess::SetRate>("SetRate", rate);
    }
    // Who waits for the end of a download may repeat it, as often as that takes.
    STDMETHODIMP Abort() override {
        return call<&IRecorderAccess::Abort, Treatment::kRepeatable>("Abort");
    }
    STDMETHODIMP get_Running(VARIANT_BOOL* running) override;
    STDMETHODIMP SetLinkRate(long rate) override {
        return call<&IRecorderAccess::SetLinkRate>("SetLinkRate", rate);
    }

    void eventComes(DISPID event, const DISPPARAMS* arguments) override;
    std::optional<EventAnswered> fire(const EventFired& event) override;
    std::string leave(const FilePiece& piece) override;

protected:
    void* findInterface(REFIID iid) override;

private:
    HRESULT forwardDownload(ICollection* selection, const Json& names, BSTR folder,
                            VARIANT_BOOL* result);
    // A download or format that runs.
    template <class Work>
    HRESULT running(Work&& work);

    EventSource events_{*this, DIID__IRecorderAccessEvents};
    std::atomic<int> running_ = 0;
    std::atomic<bool> hasToldEnd_ = false;  // in a replay

    std::mutex mutex_;  // of what follows: a recorder does one download at a time
    DownloadedFiles* downloaded_ = nullptr;
    std::shared_ptr<RestoredFiles> restored_;
};

}  // namespace kel::trace
