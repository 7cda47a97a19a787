#include "tests/wine/service/fake_recorder.h"

#include <algorithm>

#include "bench/link/agile.h"
#include "com/collection.h"
#include "com/message_loop.h"
#include "com/variant.h"

namespace kel::test {

com::ComPtr<IUnknown> makeCollection(bool isAgile) {
    if (isAgile) return bench::Agile<com::Collection>::make<IUnknown>();
    return com::createObject<com::Collection>(nullptr, nullptr);
}

void* FakeRecorder::findInterface(REFIID iid) {
    if (iid == IID_IAgileObject && isAgile_) return static_cast<IDispatch*>(this);
    return Object::findInterface(iid);
}

HRESULT FakeRecorder::findElsewhere(REFIID iid, void** result) {
    if (iid != IID_IMarshal || !isAgile_) return E_NOINTERFACE;
    com::ComPtr<IUnknown> marshaler;
    com::check(CoCreateFreeThreadedMarshaler(nullptr, &marshaler));
    return marshaler->QueryInterface(iid, result);
}

com::Variant FakeRecorder::fire(DISPID event, std::vector<com::Variant> arguments) {
    std::ranges::reverse(arguments);
    DISPPARAMS given{reinterpret_cast<VARIANT*>(arguments.data()), nullptr,
                     static_cast<UINT>(arguments.size()), 0};
    com::Variant answer;
    for (const auto& sink : events_.sinks<IDispatch>())
        com::check(sink->Invoke(event, IID_NULL, 0, DISPATCH_METHOD, &given, answer.put(), nullptr,
                                nullptr));
    return answer;
}

bool FakeRecorder::work() const {
    if (!isAgile_) com::runWaitingMessages();
    Sleep(1);
    return !isAborted;
}

HRESULT FakeRecorder::ReadListing(ICollection** listing) {
    return guarded<IRecorderAccess>([&] {
        com::ComPtr<ICollection> made;
        com::check(makeCollection(isAgile_).As(&made));
        for (const bench::CardEntry& entry : files) {
            const auto file = com::makeObject<bench::RecorderFile>(entry);
            com::check(made->Add(com::Variant(static_cast<IDispatch*>(file.Get())).get()));
        }
        *listing = made.Detach();
    });
}

HRESULT FakeRecorder::operate(VARIANT_BOOL* result) {
    return guarded<IRecorderAccess>([&] {
        isAborted = false;
        *result = operation() ? 1 : 0;
    });
}

}  // namespace kel::test
