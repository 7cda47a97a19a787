#include "hosts/trace/mobility.h"

#include <objidl.h>

#include "com/passed.h"

namespace kel::trace {
namespace {

// The class that takes an object to another thread of the process; none for the usual proxy.
CLSID carrierOf(IUnknown* object) {
    CLSID carrier{};
    com::ComPtr<IMarshal> marshal;
    if (SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(&marshal))))
        marshal->GetUnmarshalClass(IID_IUnknown, nullptr, MSHCTX_INPROC, nullptr, MSHLFLAGS_NORMAL,
                                   &carrier);
    return carrier;
}

}  // namespace

Mobility Mobility::of(IUnknown* object) {
    com::ComPtr<IUnknown> free;
    com::check(CoCreateFreeThreadedMarshaler(nullptr, &free));
    return {com::isAgile(object), carrierOf(object) == carrierOf(free.Get())};
}

hosts::Json Mobility::toJson() const {
    if (!isAgile && !isFree) return {};
    return hosts::Json::Object{{"agile", isAgile}, {"free", isFree}};
}

Mobility Mobility::fromJson(const hosts::Json& json) {
    if (json.isNull()) return {};
    const hosts::Json yes(true);
    const auto tells = [&](const char* name) {
        const hosts::Json* told = json.find(name);
        return told && *told == yes;
    };
    return {tells("agile"), tells("free")};
}

void Passage::open(const Mobility& mobility, IUnknown* wrapper) {
    isAgile_ = mobility.isAgile;
    if (mobility.isFree) com::check(CoCreateFreeThreadedMarshaler(wrapper, &marshaler_));
}

HRESULT Passage::give(REFIID iid, IUnknown* wrapper, void** result) const {
    if (iid == IID_IMarshal && marshaler_) return marshaler_->QueryInterface(iid, result);
    if (iid != IID_IAgileObject || !isAgile_) return E_NOINTERFACE;
    wrapper->AddRef();
    *result = wrapper;
    return S_OK;
}

}  // namespace kel::trace
