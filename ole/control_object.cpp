// The control as an object of a container.
#include <cstring>

#include "com/text.h"
#include "ole/control.h"
#include "ole/himetric.h"

namespace kel::ole {
namespace {

LPOLESTR copyForCaller(const wchar_t* text) {
    const std::size_t size = (wcslen(text) + 1) * sizeof(wchar_t);
    auto* copy = static_cast<LPOLESTR>(CoTaskMemAlloc(size));
    if (!copy) throw std::bad_alloc();
    std::memcpy(copy, text, size);
    return copy;
}

}  // namespace

HRESULT Control::SetClientSite(IOleClientSite* site) {
    return answer<IOleObject>([&] {
        if (site == site_.get()) return;
        // The window belongs to the place that the old site gave.
        leavePlace();
        site_.set(site);
        if (site) ambientChanged();
    });
}

HRESULT Control::GetClientSite(IOleClientSite** site) {
    return answer<IOleObject>([&] {
        com::out(site) = site_.get();
        if (*site) (*site)->AddRef();
    });
}

HRESULT Control::Close(DWORD saveOption) {
    return answer<IOleObject>([&] {
        const com::ComPtr<IOleClientSite> site = site_.get();
        if (site && isDirty_ && saveOption != OLECLOSE_NOSAVE) site->SaveObject();
        leavePlace();
        if (adviseHolder_) adviseHolder_->SendOnClose();
    });
}

HRESULT Control::GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) {
    return answer<IOleObject>([&] {
        com::out(moniker) = nullptr;
        const com::ComPtr<IOleClientSite> site = site_.get();
        if (!site) throw com::Error(E_UNEXPECTED);
        com::check(site->GetMoniker(assign, which, moniker), site);
    });
}

HRESULT Control::GetClipboardData(DWORD, IDataObject** data) {
    return answer<IOleObject>([&] {
        com::out(data) = nullptr;
        throw com::Error(E_NOTIMPL);
    });
}

HRESULT Control::DoVerb(LONG verb, LPMSG, IOleClientSite*, LONG, HWND, LPCRECT) {
    return answer<IOleObject>([&] {
        switch (verb) {
            case OLEIVERB_PRIMARY:
            case OLEIVERB_UIACTIVATE:
                activate(true);
                return S_OK;
            case OLEIVERB_SHOW:
            case OLEIVERB_INPLACEACTIVATE:
                activate(false);
                return S_OK;
            case OLEIVERB_HIDE: {
                leaveUserInterface();
                if (const HWND window = windowOfControl()) ShowWindow(window, SW_HIDE);
                return S_OK;
            }
            case OLEIVERB_DISCARDUNDOSTATE:
                return S_OK;
            default:
                // There is no window apart from the container's, and nothing to be undone.
                if (verb < 0) throw com::Error(E_NOTIMPL);
                activate(true);
                return OLEOBJ_S_INVALIDVERB;
        }
    });
}

HRESULT Control::EnumVerbs(IEnumOLEVERB** verbs) {
    return answer<IOleObject>([&] {
        com::out(verbs) = nullptr;
        throw com::Error(OLEOBJ_E_NOVERBS);
    });
}

HRESULT Control::GetUserClassID(CLSID* identifier) {
    return answer<IOleObject>([&] { com::out(identifier) = description().identifier; });
}

HRESULT Control::GetUserType(DWORD, LPOLESTR* type) {
    return answer<IOleObject>([&] {
        com::out(type) = nullptr;
        *type = copyForCaller(description().userType);
    });
}

void Control::checkAspect(DWORD aspect) const {
    if (aspect != DVASPECT_CONTENT) throw com::Error(DV_E_DVASPECT);
}

SIZEL Control::extent() const {
    return extent_ ? *extent_ : toHimetric(naturalSize());
}

HRESULT Control::SetExtent(DWORD aspect, SIZEL* extent) {
    return answer<IOleObject>([&] {
        if (!extent) throw com::Error(E_POINTER);
        checkAspect(aspect);
        if (extent->cx < 0 || extent->cy < 0) throw com::Error(E_INVALIDARG);
        extent_ = *extent;
        viewChanged();
    });
}

HRESULT Control::GetExtent(DWORD aspect, SIZEL* extent) {
    return answer<IOleObject>([&] {
        com::out(extent) = {};
        checkAspect(aspect);
        *extent = this->extent();
    });
}

IOleAdviseHolder& Control::adviseHolder() {
    if (!adviseHolder_) com::check(CreateOleAdviseHolder(&adviseHolder_));
    return *adviseHolder_.Get();
}

HRESULT Control::Advise(IAdviseSink* sink, DWORD* cookie) {
    return answer<IOleObject>([&] {
        com::out(cookie) = 0;
        if (!sink) throw com::Error(E_POINTER);
        com::check(adviseHolder().Advise(sink, cookie));
    });
}

HRESULT Control::Unadvise(DWORD cookie) {
    return answer<IOleObject>([&] { com::check(adviseHolder().Unadvise(cookie)); });
}

HRESULT Control::EnumAdvise(IEnumSTATDATA** connections) {
    return answer<IOleObject>([&] {
        com::out(connections) = nullptr;
        com::check(adviseHolder().EnumAdvise(connections));
    });
}

HRESULT Control::GetMiscStatus(DWORD aspect, DWORD* status) {
    return answer<IOleObject>(
        [&] { com::out(status) = aspect == DVASPECT_CONTENT ? description().miscStatus : 0; });
}

HRESULT Control::GetControlInfo(CONTROLINFO* information) {
    return answer<IOleControl>([&] {
        com::out(information) = {};
        information->cb = sizeof *information;
        information->dwFlags = keyFlags();
    });
}

HRESULT Control::OnAmbientPropertyChange(DISPID) {
    return answer<IOleControl>([&] { ambientChanged(); });
}

HRESULT Control::FreezeEvents(BOOL freeze) {
    return answer<IOleControl>([&] {
        if (freeze) {
            ++freezes_;
        } else if (freezes_ > 0) {
            --freezes_;
        }
    });
}

}  // namespace kel::ole
