#include "tests/wine/support/event_sink.h"

#include "com/variant.h"
#include "tests/wine/support/late_bound.h"

namespace kel::test {

com::ComPtr<IConnectionPoint> eventsOf(IUnknown* object, const IID& events) {
    com::ComPtr<IConnectionPointContainer> container;
    com::ComPtr<IConnectionPoint> point;
    com::check(object->QueryInterface(IID_PPV_ARGS(&container)));
    com::check(container->FindConnectionPoint(events, &point));
    return point;
}

HRESULT EventSink::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result,
                          EXCEPINFO*, UINT*) {
    events += std::to_string(member);
    for (UINT i = arguments->cArgs; i-- > 0;) {
        const VARIANT& argument = arguments->rgvarg[i];
        // A collection as the number of its items.
        events += " " + (argument.vt == VT_DISPATCH ? "(" + call(argument.pdispVal, "Count") + ")"
                                                    : com::Variant(argument).toText());
    }
    events += "\n";
    const HRESULT code = onEvent(member);
    if (result) *result = com::Variant(answer).release();
    return code;
}

}  // namespace kel::test
