#pragma once
// Downloads the files of the recorder's card.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/link/access/card_dialogue.h"
#include "bench/link/access/recorder_state.h"
#include "com/connection_point.h"
#include "com/object.h"

namespace kel::bench {

// Called from any thread; the thread of the link has to take sent messages meanwhile, since the
// port is reached through it. Events come on the thread of the call. One member talks with the
// instrument at a time, others fail; those that ask for what is known already are answered from
// memory while a download or format runs.
//
// An object of its own, that the link is asked for: it may move between threads, the link may not.
class RecorderAccess final : public com::Object<RecorderAccess, com::Dual<IRecorderAccess>,
                                                com::Events<&DIID__IRecorderAccessEvents>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.RecorderAccess.1"};

    // On the thread of the link.
    RecorderAccess(IKelCommunicator* link, std::shared_ptr<RecorderState> state);
    ~RecorderAccess() override;
    void finalConstruct();

    STDMETHODIMP get_CardPresent(VARIANT_BOOL* present) override;
    STDMETHODIMP get_Rate(long* rate) override;
    STDMETHODIMP ReadListing(ICollection** files) override;
    // Fails for a name that the last listing did not have; a download needs no preparation here.
    STDMETHODIMP SelectFile(BSTR name) override;
    STDMETHODIMP Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) override;
    STDMETHODIMP CardSpace(LONGLONG* used, LONGLONG* capacity) override;
    STDMETHODIMP Format(VARIANT_BOOL* result) override;
    STDMETHODIMP SetRate(long rate) override;
    STDMETHODIMP Abort() override;
    STDMETHODIMP get_Running(VARIANT_BOOL* running) override;
    STDMETHODIMP SetLinkRate(long rate) override;

protected:
    HRESULT findElsewhere(REFIID iid, void** result) override;

private:
    // The link, used and released on its own thread.
    struct Home {
        HomeThread thread;
        com::ComPtr<IKelCommunicator> link;
    };

    template <class Body>
    HRESULT operation(Body&& body) noexcept;
    template <class Body>
    void talk(Body&& body);
    template <class Body>
    HRESULT run(VARIANT_BOOL* result, const wchar_t* name, Body&& body) noexcept;
    // Ends where it is aborted.
    CardDialogue dialogue() const;
    CardStatus status();

    std::vector<CardEntry> entriesOf(ICollection* selection) const;
    bool download(CardDialogue& card, const std::vector<CardEntry>& entries,
                  const std::wstring& folder);
    void fetch(CardDialogue& card, const CardEntry& entry, const std::wstring& folder,
               const std::wstring& path, const std::function<void(std::int64_t)>& proceed);
    bool mayReplace(const std::wstring& name);
    void say(std::wstring_view text);

    std::unique_ptr<Home> home_;
    const std::shared_ptr<RecorderState> state_;
    std::atomic<long> linkRate_ = 0;
    com::ComPtr<IUnknown> marshaler_;
};

// The interface of a new access object to a link's recorder.
HRESULT recorderOf(IKelCommunicator* link, const std::shared_ptr<RecorderState>& state,
                   void** result) noexcept;

}  // namespace kel::bench
