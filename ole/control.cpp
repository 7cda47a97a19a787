#include "ole/control.h"

#include "com/object.h"

namespace kel::ole {
namespace {

// The property pages of a class that this machine has.
bool isRegistered(const CLSID& identifier) {
    LPOLESTR type = nullptr;
    if (FAILED(OleRegGetUserType(identifier, USERCLASSTYPE_FULL, &type))) return false;
    CoTaskMemFree(type);
    return true;
}

}  // namespace

void* Control::find(REFIID iid) {
    const struct {
        const IID& iid;
        void* found;
    } offered[] = {
        {IID_IOleObject, static_cast<IOleObject*>(this)},
        {IID_IOleControl, static_cast<IOleControl*>(this)},
        {IID_IOleWindow, static_cast<IOleInPlaceObject*>(this)},
        {IID_IOleInPlaceObject, static_cast<IOleInPlaceObject*>(this)},
        {IID_IOleInPlaceActiveObject, static_cast<IOleInPlaceActiveObject*>(this)},
        {IID_IViewObject, static_cast<IViewObjectEx*>(this)},
        {IID_IViewObject2, static_cast<IViewObjectEx*>(this)},
        {IID_IViewObjectEx, static_cast<IViewObjectEx*>(this)},
        {IID_IPersist, static_cast<IPersistStreamInit*>(this)},
        {IID_IPersistStreamInit, static_cast<IPersistStreamInit*>(this)},
        {IID_IPersistPropertyBag, static_cast<IPersistPropertyBag*>(this)},
        {IID_IPersistStorage, static_cast<IPersistStorage*>(this)},
        {IID_IQuickActivate, static_cast<IQuickActivate*>(this)},
        {IID_ISpecifyPropertyPages, static_cast<ISpecifyPropertyPages*>(this)},
    };
    for (const auto& each : offered)
        if (each.iid == iid) return each.found;
    return PropertyEvents::find(iid);
}

bool Control::mayChange(DISPID member) {
    if (freezes_ > 0) return true;
    for (const auto& sink : events_.sinks<IPropertyNotifySink>())
        if (sink->OnRequestEdit(member) == S_FALSE) return false;
    return true;
}

void Control::changed(DISPID member) {
    isDirty_ = true;
    if (freezes_ == 0) {
        for (const auto& sink : events_.sinks<IPropertyNotifySink>())
            sink->OnChanged(member);
    }
    viewChanged();
}

HRESULT Control::QuickActivate(QACONTAINER* container, QACONTROL* control) {
    return answer<IQuickActivate>([&] {
        if (!container || !control) throw com::Error(E_POINTER);
        if (container->cbSize < sizeof *container || control->cbSize < sizeof *control)
            throw com::Error(E_UNEXPECTED);
        *control = {};
        control->cbSize = sizeof *control;

        com::check(SetClientSite(container->pClientSite));
        if (container->pAdviseSink) {
            com::check(SetAdvise(DVASPECT_CONTENT, 0, container->pAdviseSink));
        }
        if (container->pPropertyNotifySink) {
            com::check(
                events_.Advise(container->pPropertyNotifySink, &control->dwPropNotifyCookie));
        }
        control->dwMiscStatus = description().miscStatus;
        com::check(GetViewStatus(&control->dwViewStatus));
        control->dwPointerActivationPolicy = 0;
    });
}

HRESULT Control::SetContentExtent(LPSIZEL extent) {
    return SetExtent(DVASPECT_CONTENT, extent);
}

HRESULT Control::GetContentExtent(LPSIZEL extent) {
    return GetExtent(DVASPECT_CONTENT, extent);
}

HRESULT Control::GetPages(CAUUID* pages) {
    return answer<ISpecifyPropertyPages>([&] {
        com::out(pages) = {};
        const auto all = description().propertyPages;
        auto* list = static_cast<GUID*>(CoTaskMemAlloc(all.size() * sizeof(GUID)));
        if (!list) throw std::bad_alloc();
        pages->pElems = list;
        for (const CLSID* page : all)
            if (isRegistered(*page)) list[pages->cElems++] = *page;
    });
}

}  // namespace kel::ole
