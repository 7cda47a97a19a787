#pragma once
// What a receiver of late-bound events answers of IDispatch besides the events.
//
//     class Sink final : public com::Object<Sink, com::EventReceiver<>> {
//         HRESULT received(DISPID event, DISPPARAMS* arguments, VARIANT* result) override;

#include "com/object.h"

namespace kel::com {

// `Interface` is the outgoing interface where that is to be answered as well.
template <class Interface = IDispatch>
class EventReceiver : public Plain<Interface, IDispatch> {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        return guardLateBound([&] { out(count) = 0; });
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO*, UINT*) override {
        return guardLateBound([&] { return received(event, arguments, result); });
    }

protected:
    // The arguments stand in reverse order; both they and the place for the answer may be null.
    // What it throws is the event's failure.
    virtual HRESULT received(DISPID event, DISPPARAMS* arguments, VARIANT* result) = 0;
};

}  // namespace kel::com
