#include "tests/wine/terminal/container.h"

namespace kel::test {

// One object of all the interfaces; those of the frame and the document are the same.
class Container::Site final
    : public com::Object<Site, com::Plain<IOleClientSite>,
                         com::Plain<IOleInPlaceSiteEx, IOleInPlaceSite, IOleWindow>,
                         com::Plain<IOleControlSite>,
                         com::Plain<IOleInPlaceFrame, IOleInPlaceUIWindow>, com::Plain<IDispatch>,
                         com::Plain<IPropertyNotifySink>, com::Plain<IAdviseSink>> {
public:
    static constexpr com::ClassDescription kClass{};
    explicit Site(Container& owner) : owner_(owner) {}

    STDMETHODIMP SaveObject() override { return owner_.onCall("SaveObject"); }
    STDMETHODIMP GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    STDMETHODIMP GetContainer(IOleContainer**) override { return E_NOINTERFACE; }
    STDMETHODIMP ShowObject() override { return owner_.onCall("ShowObject"); }
    STDMETHODIMP OnShowWindow(BOOL) override { return S_OK; }
    STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

    STDMETHODIMP GetWindow(HWND* window) override {
        *window = owner_.window_;
        return owner_.onCall("GetWindow");
    }
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP CanInPlaceActivate() override { return owner_.onCall("CanInPlaceActivate"); }
    STDMETHODIMP OnInPlaceActivate() override { return owner_.onCall("OnInPlaceActivate"); }
    STDMETHODIMP OnUIActivate() override { return owner_.onCall("OnUIActivate"); }
    STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                  LPRECT position, LPRECT clip, LPOLEINPLACEFRAMEINFO) override {
        AddRef();
        *frame = this;
        *document = nullptr;
        *position = owner_.place;
        *clip = owner_.clip;
        return owner_.onCall("GetWindowContext");
    }
    STDMETHODIMP Scroll(SIZE) override { return E_NOTIMPL; }
    STDMETHODIMP OnUIDeactivate(BOOL) override { return owner_.onCall("OnUIDeactivate"); }
    STDMETHODIMP OnInPlaceDeactivate() override { return owner_.onCall("OnInPlaceDeactivate"); }
    STDMETHODIMP DiscardUndoState() override { return E_NOTIMPL; }
    STDMETHODIMP DeactivateAndUndo() override { return E_NOTIMPL; }
    STDMETHODIMP OnPosRectChange(LPCRECT) override { return E_NOTIMPL; }
    STDMETHODIMP OnInPlaceActivateEx(BOOL*, DWORD) override {
        return owner_.onCall("OnInPlaceActivateEx");
    }
    STDMETHODIMP OnInPlaceDeactivateEx(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP RequestUIActivate() override { return E_NOTIMPL; }

    STDMETHODIMP OnControlInfoChanged() override { return S_OK; }
    STDMETHODIMP LockInPlaceActive(BOOL) override { return S_OK; }
    STDMETHODIMP GetExtendedControl(IDispatch**) override { return E_NOTIMPL; }
    STDMETHODIMP TransformCoords(POINTL*, POINTF*, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(MSG*, DWORD) override {
        owner_.onCall("TranslateAccelerator");
        return S_FALSE;
    }
    STDMETHODIMP OnFocus(BOOL focus) override {
        return owner_.onCall(focus ? "OnFocus" : "OnFocus lost");
    }
    STDMETHODIMP ShowPropertyFrame() override { return E_NOTIMPL; }

    STDMETHODIMP GetBorder(LPRECT) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP RequestBorderSpace(LPCBORDERWIDTHS) override { return INPLACE_E_NOTOOLSPACE; }
    STDMETHODIMP SetBorderSpace(LPCBORDERWIDTHS) override { return S_OK; }
    STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* object, LPCOLESTR) override {
        owner_.active_ = object;
        return owner_.onCall(object ? "SetActiveObject" : "SetActiveObject none");
    }
    STDMETHODIMP InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    STDMETHODIMP SetMenu(HMENU, HOLEMENU, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveMenus(HMENU) override { return E_NOTIMPL; }
    STDMETHODIMP SetStatusText(LPCOLESTR) override { return E_NOTIMPL; }
    STDMETHODIMP EnableModeless(BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                        UINT*) override {
        const auto found = owner_.ambients.find(member);
        if (found == owner_.ambients.end()) return DISP_E_MEMBERNOTFOUND;
        return VariantCopy(result, const_cast<VARIANT*>(&found->second.get()));
    }

    STDMETHODIMP OnChanged(DISPID member) override {
        return owner_.onCall("OnChanged " + std::to_string(member));
    }
    STDMETHODIMP OnRequestEdit(DISPID member) override {
        return owner_.onCall("OnRequestEdit " + std::to_string(member));
    }

    STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {}
    STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override { owner_.onCall("OnViewChange"); }
    STDMETHODIMP_(void) OnRename(IMoniker*) override {}
    STDMETHODIMP_(void) OnSave() override {}
    STDMETHODIMP_(void) OnClose() override { owner_.onCall("OnClose"); }

private:
    Container& owner_;
};

Container::Container()
    : window_(CreateWindowExW(WS_EX_CONTROLPARENT, L"STATIC", L"Container",
                              WS_OVERLAPPED | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 700, 500, nullptr,
                              nullptr, nullptr, nullptr)),
      site_(com::makeObject<Site>(*this)) {}

Container::~Container() {
    end();
    DestroyWindow(window_);
}

// The control holds its site, and this its active object.
void Container::end() {
    com::ComPtr<IOleInPlaceObject> control;
    if (active_ && SUCCEEDED(active_.As(&control))) control->InPlaceDeactivate();
}

IOleClientSite* Container::site() const {
    return site_.Get();
}

IPropertyNotifySink* Container::propertySink() const {
    return site_.Get();
}

IAdviseSink* Container::adviseSink() const {
    return site_.Get();
}

}  // namespace kel::test
