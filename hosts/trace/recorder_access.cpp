#include "hosts/trace/recorder_access.h"

#include "com/variant.h"
#include "hosts/trace/listing.h"

namespace kel::trace {
namespace {

constexpr DISPID kFinished = 3;
constexpr DISPID kFileStarted = 5;

// The collection behind a wrapper; one that is not wrapped itself.
com::ComPtr<ICollection> innerOf(ICollection* collection) {
    com::ComPtr<ICollection> inner = collection;
    const TracedObject* traced = TracedObject::from(collection);
    if (traced && traced->innerObject())
        com::check(traced->innerObject()->QueryInterface(IID_PPV_ARGS(&inner)));
    return inner;
}

}  // namespace

HRESULT RecorderAccess::ReadListing(ICollection** files) {
    return guardedCall([&] {
        Invocation made = invocation<&IRecorderAccess::ReadListing>("ReadListing", files);
        made.out = [=] { return Json::Array{files ? listingToJson(*files) : Json()}; };
        made.give = [=](const Json::Array& values) {
            com::out(files) = listingFromJson(values.at(0)).Detach();
        };
        return made;
    });
}

HRESULT RecorderAccess::Download(ICollection* selection, BSTR folder, VARIANT_BOOL* result) {
    return running([&] {
        return guardedCall([&] {
            const com::ComPtr<ICollection> inner = innerOf(selection);
            const Json names = namesIn(inner.Get());
            Invocation made =
                invocation<&IRecorderAccess::Download>("Download", selection, folder, result);
            made.in = [=] { return Json::Array{names, toText(com::view(folder))}; };
            made.forward = [=, this] {
                return forwardDownload(inner.Get(), names, folder, result);
            };
            if (session().isReplay()) {
                const std::lock_guard lock(mutex_);
                restored_ = std::make_shared<RestoredFiles>(std::wstring(com::view(folder)));
            }
            return made;
        });
    });
}

HRESULT RecorderAccess::forwardDownload(ICollection* selection, const Json& names, BSTR folder,
                                        VARIANT_BOOL* result) {
    DownloadedFiles files(*this, std::wstring(com::view(folder)), names);
    const auto setDownloaded = [this](DownloadedFiles* downloaded) {
        const std::lock_guard lock(mutex_);
        downloaded_ = downloaded;
    };
    setDownloaded(&files);
    const HRESULT code = wrapped()->Download(selection, folder, result);
    setDownloaded(nullptr);
    files.tellAll();
    return code;
}

HRESULT RecorderAccess::Format(VARIANT_BOOL* result) {
    return running([&] { return call<&IRecorderAccess::Format>("Format", result); });
}

template <class Work>
HRESULT RecorderAccess::running(Work&& work) {
    const com::KeepAlive alive(*this);
    const EventSource::Firing firing(events_);
    hasToldEnd_ = false;
    ++running_;
    const HRESULT code = work();
    --running_;
    return code;
}

// How often it is asked depends on timing; a replay knows by itself. Where there is no place for
// the answer, the link refuses.
HRESULT RecorderAccess::get_Running(VARIANT_BOOL* result) {
    if (!result) return call<&IRecorderAccess::get_Running>("get_Running", result);
    return guardedCall([&] {
        Invocation made =
            invocation<&IRecorderAccess::get_Running, Treatment::kLocal>("get_Running", result);
        if (!wrapped()) {
            made.forward = [=, this] {
                *result = com::variantBool(running_ > 0 && !hasToldEnd_);
                return S_OK;
            };
        }
        return made;
    });
}

// Only then a file is whole that one before it was not.
void RecorderAccess::eventComes(DISPID event, const DISPPARAMS* arguments) {
    if (event != kFileStarted && event != kFinished) return;
    const bool hasName = event == kFileStarted && arguments && arguments->cArgs == 1 &&
                         arguments->rgvarg[0].vt == VT_BSTR;
    const std::lock_guard lock(mutex_);
    if (downloaded_)
        downloaded_->starts(hasName ? std::wstring(com::view(arguments->rgvarg[0].bstrVal))
                                    : std::wstring());
}

std::optional<EventAnswered> RecorderAccess::fire(const EventFired& event) {
    if (event.member == kFinished) hasToldEnd_ = true;
    return events_.fire(event);
}

std::string RecorderAccess::leave(const FilePiece& piece) {
    std::shared_ptr<RestoredFiles> restored;
    {
        const std::lock_guard lock(mutex_);
        restored = restored_;
    }
    return restored ? restored->put(piece) : "no download runs";
}

void* RecorderAccess::findInterface(REFIID iid) {
    if (iid != IID_IConnectionPointContainer) return MobileTraced::findInterface(iid);
    return events_.isOffered() ? static_cast<IConnectionPointContainer*>(&events_) : nullptr;
}

}  // namespace kel::trace
