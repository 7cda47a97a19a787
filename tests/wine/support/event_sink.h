#pragma once
// A client of events.

#include <windows.h>

#include <ocidl.h>

#include <functional>
#include <string>

#include "com/object.h"

namespace kel::test {

// Throws when the object has no such events.
com::ComPtr<IConnectionPoint> eventsOf(IUnknown* object, const IID& events);

// A sink that writes down the events it gets.
class EventSink final : public com::Object<EventSink, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::string events;
    // What events that ask are answered.
    bool answer = false;
    // Any thread may call it.
    bool isAgile = false;
    std::function<HRESULT(DISPID member)> onEvent = [](DISPID) { return S_OK; };

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                        EXCEPINFO*, UINT*) override;

protected:
    void* findInterface(REFIID iid) override {
        const bool isOffered = iid == IID_IAgileObject && isAgile;
        return isOffered ? static_cast<IDispatch*>(this) : Object::findInterface(iid);
    }
};

}  // namespace kel::test
