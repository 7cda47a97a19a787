#include "hosts/shared/script_events.h"

#include <utility>

#include "com/event_sink.h"
#include "com/text.h"
#include "com/variant.h"

namespace kel::host {
namespace {

class Sink final : public com::Object<Sink, com::EventReceiver<>> {
public:
    static constexpr com::ClassDescription kClass{};

    explicit Sink(ScriptEvents::Listener listener) : listener_(std::move(listener)) {}

private:
    HRESULT received(DISPID event, DISPPARAMS* arguments, VARIANT*) override {
        if (!arguments) return E_INVALIDARG;
        listener_(static_cast<ScriptEvent>(event), EventArguments(*arguments));
        return S_OK;
    }

    ScriptEvents::Listener listener_;
};

}  // namespace

const VARIANT& EventArguments::at(UINT index) const {
    if (index >= parameters_.cArgs) throw com::Error(DISP_E_BADPARAMCOUNT);
    return parameters_.rgvarg[parameters_.cArgs - 1 - index];
}

std::wstring EventArguments::text(UINT index) const {
    const com::Variant value = com::Variant(at(index)).convertedTo(VT_BSTR);
    return std::wstring(com::view(value.get().bstrVal));
}

std::string EventArguments::utf8(UINT index) const {
    return com::narrow(text(index), CP_UTF8);
}

std::size_t EventArguments::number(UINT index) const {
    return static_cast<std::size_t>(com::Variant(at(index)).convertedTo(VT_I4).get().lVal);
}

com::ComPtr<IFlatCollection> EventArguments::collection(UINT index) const {
    const VARIANT& value = at(index);
    com::ComPtr<IFlatCollection> items;
    if (value.vt != VT_DISPATCH || !value.pdispVal) throw com::Error(DISP_E_TYPEMISMATCH);
    com::check(value.pdispVal->QueryInterface(IID_PPV_ARGS(&items)));
    return items;
}

ScriptEvents::ScriptEvents(const com::ComPtr<IPreprocessorControl>& preprocessor,
                           Listener listener) {
    com::ComPtr<IConnectionPointContainer> container;
    com::check(preprocessor.As(&container), preprocessor);
    com::check(container->FindConnectionPoint(DIID__IPreprocessorEvents, &source_), container);
    const auto sink = com::makeObject<Sink>(std::move(listener));
    com::check(source_->Advise(sink->controlling(), &cookie_), source_);
}

ScriptEvents::~ScriptEvents() {
    source_->Unadvise(cookie_);
}

}  // namespace kel::host
