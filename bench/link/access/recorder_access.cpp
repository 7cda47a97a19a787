#include "bench/link/access/recorder_access.h"

#include <algorithm>
#include <limits>

#include "bench/link/access/recorder_file.h"
#include "bench/link/agile.h"
#include "com/collection.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::bench {
namespace {

constexpr DISPID kRecorderStatus = 1;
constexpr DISPID kFinished = 3;

// A flag that is up for as long as this lives, and was not before.
class Raised {
public:
    explicit Raised(std::atomic<bool>& flag) : flag_(flag) {
        if (flag.exchange(true)) {
            throw com::Error(HRESULT_FROM_WIN32(ERROR_BUSY), L"The recorder is being used");
        }
    }
    ~Raised() { flag_ = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    std::atomic<bool>& flag_;
};

}  // namespace

RecorderAccess::RecorderAccess(IKelCommunicator* link, std::shared_ptr<RecorderState> state)
    : home_(std::make_unique<Home>()), state_(std::move(state)) {
    home_->link = link;
}

RecorderAccess::~RecorderAccess() {
    if (home_->thread.isCurrent()) return;
    Home* const home = home_.release();
    // Where the thread has ended nobody may release the link any more.
    home->thread.post([home] { delete home; });
}

void RecorderAccess::finalConstruct() {
    com::check(CoCreateFreeThreadedMarshaler(controlling(), &marshaler_));
}

HRESULT RecorderAccess::findElsewhere(REFIID iid, void** result) {
    if (iid == IID_IMarshal) return marshaler_->QueryInterface(iid, result);
    if (iid != IID_IAgileObject) return E_NOINTERFACE;
    controlling()->AddRef();
    *result = controlling();
    return S_OK;
}

HRESULT RecorderAccess::get_CardPresent(VARIANT_BOOL* present) {
    return operation([&] {
        com::out(present) = VARIANT_FALSE;
        try {
            status();
            *present = VARIANT_TRUE;
        } catch (const NoAnswer&) {
            // None, or none that can be asked for.
        }
    });
}

HRESULT RecorderAccess::get_Rate(long* rate) {
    return operation([&] {
        com::out(rate) = 0;
        *rate = static_cast<long>(status().rate);
    });
}

HRESULT RecorderAccess::ReadListing(ICollection** files) {
    return operation([&] {
        com::out(files) = nullptr;
        talk([&] {
            const auto entries = dialogue().list();
            const auto listing = Agile<com::Collection>::make<ICollection>();
            for (const CardEntry& entry : entries) {
                const auto file = Agile<RecorderFile>::make<IDispatch>(entry);
                com::check(listing->Add(com::Variant(file.Get()).get()));
            }
            state_->setListing(entries);
            com::check(listing.CopyTo(files));
        });
    });
}

HRESULT RecorderAccess::SelectFile(BSTR name) {
    return operation([&] {
        if (!state_->lists(com::narrow(name))) {
            throw com::Error(E_INVALIDARG,
                             L"The card has no file '" + std::wstring(com::view(name)) + L"'");
        }
    });
}

HRESULT RecorderAccess::Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) {
    return run(result, L"download", [&](CardDialogue& card) {
        if (!selection) throw com::Error(E_INVALIDARG, L"There is no selection");
        std::wstring path(com::view(folder));
        if (!path.ends_with(L'\\') && !path.ends_with(L'/')) path += L'\\';
        state_->setStatus(card.status());
        return download(card, entriesOf(selection), path);
    });
}

HRESULT RecorderAccess::CardSpace(LONGLONG* used, LONGLONG* capacity) {
    return operation([&] {
        com::out(used) = 0;
        com::out(capacity) = 0;
        const CardStatus now = status();
        *used = now.used;
        *capacity = now.capacity;
    });
}

HRESULT RecorderAccess::Format(VARIANT_BOOL* result) {
    return run(result, L"format", [&](CardDialogue& card) {
        say(L"Formatting the card...");
        card.format();
        state_->setListing({});
        state_->setStatus(card.status());
        return true;
    });
}

HRESULT RecorderAccess::SetRate(long rate) {
    return operation([&] { talk([&] { dialogue().setRate(rate); }); });
}

HRESULT RecorderAccess::Abort() {
    return operation([&] { state_->isAborted = state_->isTalking.load(); });
}

HRESULT RecorderAccess::get_Running(VARIANT_BOOL* running) {
    return operation([&] { com::out(running) = com::variantBool(state_->isRunning); });
}

HRESULT RecorderAccess::SetLinkRate(long rate) {
    return operation([&] {
        if (rate <= 0) throw com::Error(E_INVALIDARG, L"A line rate is above zero");
        linkRate_ = rate;
    });
}

// The border of every member.
template <class Body>
HRESULT RecorderAccess::operation(Body&& body) noexcept {
    const com::KeepAlive alive(*this);
    return guarded<IRecorderAccess>(std::forward<Body>(body));
}

template <class Body>
void RecorderAccess::talk(Body&& body) {
    const Raised talking(state_->isTalking);
    state_->isAborted = false;
    try {
        body();
    } catch (const Aborted&) {
        throw com::Error(E_ABORT, L"What the recorder was asked for was aborted");
    }
}

// A download or format: tells by events and by the result how it went.
template <class Body>
HRESULT RecorderAccess::run(VARIANT_BOOL* result, const wchar_t* name, Body&& body) noexcept {
    return operation([&] {
        com::out(result) = VARIANT_FALSE;
        talk([&] {
            const Raised running(state_->isRunning);
            const std::wstring the = std::wstring(L"The ") + name;
            try {
                CardDialogue card = dialogue();
                try {
                    const bool done = body(card);
                    say(the + (done ? L" is complete" : L" is not complete"));
                    *result = com::variantBool(done);
                } catch (const Aborted&) {
                    card.stop();
                    say(the + L" was aborted");
                }
            } catch (const NoAnswer& failure) {
                say(the + L" failed: " + failure.description());
            }
        });
        events_.fire(kFinished, {});
    });
}

CardDialogue RecorderAccess::dialogue() const {
    return CardDialogue(home_->link.Get(), home_->thread,
                        [state = state_] { return state->isAborted.load(); });
}

CardStatus RecorderAccess::status() {
    const auto known = state_->status();
    if (known && state_->isRunning) return *known;
    CardStatus heard;
    talk([&] { heard = dialogue().status(); });
    state_->setStatus(heard);
    return heard;
}

void RecorderAccess::say(std::wstring_view text) {
    events_.fire(kRecorderStatus, {com::Variant(text)});
}

HRESULT recorderOf(IKelCommunicator* link, const std::shared_ptr<RecorderState>& state,
                   void** result) noexcept {
    return com::guard(__uuidof(IRecorderAccess), nullptr, [&] {
        com::ComPtr<IUnknown> owner =
            com::createObject<RecorderAccess>(nullptr, nullptr, link, state);
        return owner->QueryInterface(__uuidof(IRecorderAccess), result);
    });
}

}  // namespace kel::bench
