#pragma once
// The link's general collection, wrapped.

#include "hosts/trace/traced.h"

namespace kel::trace {

// Collections have nothing of the instrument: their calls are told and can fail on demand, but a
// replay neither compares nor answers them.
class CollectionWrapper final : public MobileTraced<CollectionWrapper, ICollection> {
public:
    using MobileTraced::MobileTraced;

    STDMETHODIMP get_Count(long* count) override {
        return call<&ICollection::get_Count, Treatment::kLocal>("get_Count", count);
    }
    STDMETHODIMP get_Item(VARIANT index, VARIANT* item) override {
        return call<&ICollection::get_Item, Treatment::kLocal>("get_Item", index, item);
    }
    STDMETHODIMP Add(VARIANT item) override {
        return call<&ICollection::Add, Treatment::kLocal>("Add", item);
    }
    STDMETHODIMP Remove(VARIANT index) override {
        return call<&ICollection::Remove, Treatment::kLocal>("Remove", index);
    }
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override {
        return call<&ICollection::get__NewEnum, Treatment::kLocal>("get__NewEnum", enumerator);
    }
};

}  // namespace kel::trace
