#pragma once
// The base of a control: what any container may ask of one, for a component that has a window.
//
//     class Dial final : public com::Object<Dial, com::Dual<IDial>, ole::Control> { ... };

#include <windows.h>

#include <ocidl.h>
#include <olectl.h>

#include <optional>
#include <span>
#include <vector>

#include "com/connection_point.h"
#include "com/error.h"
#include "com/variant.h"
#include "ole/property_data.h"
#include "ole/site.h"

namespace kel::ole {

// A property that containers save with the control.
struct PersistedProperty {
    const wchar_t* name;
    DISPID member;
    PropertyKind kind;
};

// What a control is, apart from what it does.
struct ControlDescription {
    const CLSID& identifier;
    const wchar_t* programIdentifier;
    const wchar_t* userType;  // as a user reads it
    DWORD miscStatus;         // as registered
    std::span<const PersistedProperty> properties;
    std::span<const CLSID* const> propertyPages;
};

using PropertyEvents = com::Events<&IID_IPropertyNotifySink, IPropertyNotifySink>;

// Belongs to the thread of its container. Every call on the container may come back into the
// control: deactivate it, or drop its last reference.
class Control : public IOleObject,
                public IOleControl,
                public IOleInPlaceObject,
                public IOleInPlaceActiveObject,
                public IViewObjectEx,
                public IPersistStreamInit,
                public IPersistPropertyBag,
                public IPersistStorage,
                public IQuickActivate,
                public ISpecifyPropertyPages,
                public PropertyEvents {
public:
    // IOleObject.
    STDMETHODIMP SetClientSite(IOleClientSite* site) override;
    STDMETHODIMP GetClientSite(IOleClientSite** site) override;
    STDMETHODIMP SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    STDMETHODIMP Close(DWORD saveOption) override;
    STDMETHODIMP SetMoniker(DWORD, IMoniker*) override { return refuse<IOleObject>(E_NOTIMPL); }
    STDMETHODIMP GetMoniker(DWORD assign, DWORD which, IMoniker** moniker) override;
    STDMETHODIMP InitFromData(IDataObject*, BOOL, DWORD) override {
        return refuse<IOleObject>(E_NOTIMPL);
    }
    STDMETHODIMP GetClipboardData(DWORD, IDataObject** data) override;
    STDMETHODIMP DoVerb(LONG verb, LPMSG message, IOleClientSite* site, LONG index, HWND parent,
                        LPCRECT place) override;
    STDMETHODIMP EnumVerbs(IEnumOLEVERB** verbs) override;
    STDMETHODIMP Update() override { return S_OK; }
    STDMETHODIMP IsUpToDate() override { return S_OK; }
    STDMETHODIMP GetUserClassID(CLSID* identifier) override;
    STDMETHODIMP GetUserType(DWORD form, LPOLESTR* type) override;
    STDMETHODIMP SetExtent(DWORD aspect, SIZEL* extent) override;
    STDMETHODIMP GetExtent(DWORD aspect, SIZEL* extent) override;
    STDMETHODIMP Advise(IAdviseSink* sink, DWORD* cookie) override;
    STDMETHODIMP Unadvise(DWORD cookie) override;
    STDMETHODIMP EnumAdvise(IEnumSTATDATA** connections) override;
    STDMETHODIMP GetMiscStatus(DWORD aspect, DWORD* status) override;
    STDMETHODIMP SetColorScheme(LOGPALETTE*) override { return refuse<IOleObject>(E_NOTIMPL); }

    // IOleControl.
    STDMETHODIMP GetControlInfo(CONTROLINFO* information) override;
    STDMETHODIMP OnMnemonic(MSG*) override { return S_OK; }
    STDMETHODIMP OnAmbientPropertyChange(DISPID property) override;
    STDMETHODIMP FreezeEvents(BOOL freeze) override;

    // IOleWindow, IOleInPlaceObject.
    STDMETHODIMP GetWindow(HWND* window) override;
    STDMETHODIMP ContextSensitiveHelp(BOOL) override { return refuse<IOleWindow>(E_NOTIMPL); }
    STDMETHODIMP InPlaceDeactivate() override;
    STDMETHODIMP UIDeactivate() override;
    STDMETHODIMP SetObjectRects(LPCRECT position, LPCRECT clip) override;
    STDMETHODIMP ReactivateAndUndo() override {
        return refuse<IOleInPlaceObject>(INPLACE_E_NOTUNDOABLE);
    }

    // IOleInPlaceActiveObject.
    STDMETHODIMP TranslateAccelerator(LPMSG message) override;
    STDMETHODIMP OnFrameWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP OnDocWindowActivate(BOOL) override { return S_OK; }
    STDMETHODIMP ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    STDMETHODIMP EnableModeless(BOOL) override { return S_OK; }

    // IViewObjectEx.
    STDMETHODIMP Draw(DWORD aspect, LONG index, void* reserved, DVTARGETDEVICE* target,
                      HDC targetDevice, HDC device, LPCRECTL bounds, LPCRECTL windowBounds,
                      BOOL(CALLBACK* proceed)(ULONG_PTR), ULONG_PTR argument) override;
    STDMETHODIMP GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE**) override {
        return refuse<IViewObject>(E_NOTIMPL);
    }
    STDMETHODIMP Freeze(DWORD, LONG, void*, DWORD*) override {
        return refuse<IViewObject>(E_NOTIMPL);
    }
    STDMETHODIMP Unfreeze(DWORD) override { return refuse<IViewObject>(E_NOTIMPL); }
    STDMETHODIMP SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override;
    STDMETHODIMP GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override;
    STDMETHODIMP GetExtent(DWORD aspect, LONG index, DVTARGETDEVICE* target,
                           LPSIZEL extent) override;
    STDMETHODIMP GetRect(DWORD aspect, LPRECTL place) override;
    STDMETHODIMP GetViewStatus(DWORD* status) override;
    STDMETHODIMP QueryHitPoint(DWORD aspect, LPCRECT bounds, POINT point, LONG close,
                               DWORD* result) override;
    STDMETHODIMP QueryHitRect(DWORD aspect, LPCRECT bounds, LPCRECT place, LONG close,
                              DWORD* result) override;
    STDMETHODIMP GetNaturalExtent(DWORD aspect, LONG index, DVTARGETDEVICE* target, HDC device,
                                  DVEXTENTINFO* information, LPSIZEL size) override;

    // IPersistStreamInit, IPersistPropertyBag, IPersistStorage.
    STDMETHODIMP GetClassID(CLSID* identifier) override;
    STDMETHODIMP IsDirty() override { return isDirty_ ? S_OK : S_FALSE; }
    STDMETHODIMP InitNew() override;
    STDMETHODIMP Load(IStream* stream) override;
    STDMETHODIMP Save(IStream* stream, BOOL clearDirty) override;
    STDMETHODIMP GetSizeMax(ULARGE_INTEGER* size) override;
    STDMETHODIMP Load(IPropertyBag* bag, IErrorLog* log) override;
    STDMETHODIMP Save(IPropertyBag* bag, BOOL clearDirty, BOOL saveAll) override;
    STDMETHODIMP InitNew(IStorage* storage) override;
    STDMETHODIMP Load(IStorage* storage) override;
    STDMETHODIMP Save(IStorage* storage, BOOL sameAsLoad) override;
    STDMETHODIMP SaveCompleted(IStorage* storage) override;
    STDMETHODIMP HandsOffStorage() override { return S_OK; }

    // IQuickActivate, ISpecifyPropertyPages.
    STDMETHODIMP QuickActivate(QACONTAINER* container, QACONTROL* control) override;
    STDMETHODIMP SetContentExtent(LPSIZEL extent) override;
    STDMETHODIMP GetContentExtent(LPSIZEL extent) override;

    STDMETHODIMP GetPages(CAUUID* pages) override;

protected:
    ~Control() = default;

    void* find(REFIID iid);

    virtual const ControlDescription& description() const = 0;

    // What the component does. May throw.
    virtual void createWindow(HWND parent, const RECT& place) = 0;
    virtual void destroyWindow() = 0;
    // Null while there is none.
    virtual HWND windowOfControl() const = 0;
    // In pixels.
    virtual SIZE naturalSize() const = 0;
    virtual void drawInactive(HDC device, const RECT& place) = 0;
    virtual com::Variant persisted(DISPID member) const = 0;
    // A value of the property's kind, which may still be one that the control does not take: then
    // it stays as it is.
    virtual void restore(DISPID member, const com::Variant& value) = 0;
    virtual void ambientChanged() {}
    // Of CTRLINFO.
    virtual DWORD keyFlags() const { return 0; }

    const Site& site() const { return site_; }

    // Asks who watches the property: false when somebody refuses the change.
    bool mayChange(DISPID member);
    // Tells who watches that the property has changed, and what it shows.
    void changed(DISPID member);

    // The focus came into the control's window or left it.
    void focusChanged(bool hasFocus);

    // Takes the control's window away as a container would. For destructors: throws nothing.
    void leaveContainer() noexcept;

private:
    // The border of a method: whatever is called, or let go of, may drop the control's last
    // reference.
    template <class Interface, class Body>
    HRESULT answer(Body&& body) noexcept {
        const com::ComPtr<IOleObject> alive(this);
        return com::guard(__uuidof(Interface), description().programIdentifier,
                          std::forward<Body>(body));
    }
    // What the control does not do at all.
    template <class Interface>
    HRESULT refuse(HRESULT code) noexcept {
        return com::publish(code, {}, __uuidof(Interface), description().programIdentifier);
    }

    void activate(bool withUserInterface);
    void enterPlace(const com::ComPtr<IOleInPlaceSite>& place);
    void takeUserInterface();
    void leaveUserInterface();
    void leavePlace();
    void placeWindow(const RECT& position, const RECT* clip);
    HRESULT moveFocus(const MSG& message);

    IOleAdviseHolder& adviseHolder();
    void viewChanged();
    void checkAspect(DWORD aspect) const;
    SIZEL extent() const;

    std::vector<NamedProperty> properties() const;
    void apply(const std::vector<NamedProperty>& properties);

    Site site_;
    // Null while the control has no place in its container's window.
    com::ComPtr<IOleInPlaceSite> place_;
    com::ComPtr<IOleInPlaceFrame> frame_;
    com::ComPtr<IOleInPlaceUIWindow> document_;
    bool hasUserInterface_ = false;
    bool hasFocus_ = false;
    com::ComPtr<IOleAdviseHolder> adviseHolder_;
    com::ComPtr<IAdviseSink> viewSink_;
    DWORD viewAspects_ = 0;
    DWORD viewFlags_ = 0;
    std::optional<SIZEL> extent_;
    int freezes_ = 0;
    bool isDirty_ = false;
};

}  // namespace kel::ole
