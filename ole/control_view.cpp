// The control as a picture in its container.
#include "ole/control.h"
#include "ole/himetric.h"

namespace kel::ole {

HRESULT Control::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC device, LPCRECTL bounds,
                      LPCRECTL, BOOL(CALLBACK*)(ULONG_PTR), ULONG_PTR) {
    return answer<IViewObjectEx>([&] {
        checkAspect(aspect);
        if (!device) throw com::Error(E_INVALIDARG);
        // They are missing only where a control without a window is drawn in place: this one has
        // one.
        if (!bounds) throw com::Error(E_INVALIDARG);
        const RECT place{bounds->left, bounds->top, bounds->right, bounds->bottom};
        drawInactive(device, place);
    });
}

HRESULT Control::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
    return answer<IViewObjectEx>([&] {
        viewSink_ = sink;
        viewAspects_ = aspects;
        viewFlags_ = flags;
        if (flags & ADVF_PRIMEFIRST) viewChanged();
    });
}

HRESULT Control::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
    return answer<IViewObjectEx>([&] {
        if (aspects) *aspects = viewAspects_;
        if (flags) *flags = viewFlags_;
        if (sink) viewSink_.CopyTo(sink);
    });
}

void Control::viewChanged() {
    const com::ComPtr<IAdviseSink> sink = viewSink_;
    if (!sink || !(viewAspects_ & DVASPECT_CONTENT)) return;
    if (viewFlags_ & ADVF_ONLYONCE) viewSink_.Reset();
    sink->OnViewChange(DVASPECT_CONTENT, -1);
}

HRESULT Control::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL extent) {
    return GetExtent(aspect, extent);
}

HRESULT Control::GetRect(DWORD aspect, LPRECTL place) {
    return answer<IViewObjectEx>([&] {
        com::out(place) = {};
        checkAspect(aspect);
        const SIZEL size = extent();
        *place = {0, 0, size.cx, size.cy};
    });
}

HRESULT Control::GetViewStatus(DWORD* status) {
    return answer<IViewObjectEx>(
        [&] { com::out(status) = VIEWSTATUS_OPAQUE | VIEWSTATUS_SOLIDBKGND; });
}

HRESULT Control::QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG, DWORD* result) {
    return answer<IViewObjectEx>([&] {
        com::out(result) = HITRESULT_OUTSIDE;
        if (!bounds) throw com::Error(E_POINTER);
        checkAspect(aspect);
        if (PtInRect(bounds, point)) *result = HITRESULT_HIT;
    });
}

HRESULT Control::QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT place, LONG, DWORD* result) {
    return answer<IViewObjectEx>([&] {
        com::out(result) = HITRESULT_OUTSIDE;
        if (!bounds || !place) throw com::Error(E_POINTER);
        checkAspect(aspect);
        RECT common{};
        if (IntersectRect(&common, bounds, place)) *result = HITRESULT_HIT;
    });
}

HRESULT Control::GetNaturalExtent(DWORD aspect, LONG, DVTARGETDEVICE*, HDC,
                                  DVEXTENTINFO* information, LPSIZEL size) {
    return answer<IViewObjectEx>([&] {
        if (!information || !size) throw com::Error(E_POINTER);
        checkAspect(aspect);
        // Any size that a container proposes is as good; content has one of its own.
        if (information->dwExtentMode == DVEXTENT_CONTENT) *size = toHimetric(naturalSize());
    });
}

}  // namespace kel::ole
