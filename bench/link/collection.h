#pragma once
// The link's general collection.

#include <vector>

#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::bench {

class Collection final : public com::Object<Collection, com::Dual<ICollection>> {
public:
    static constexpr com::ClassDescription kClass{nullptr, L"BenchLink.Collection.1"};

    STDMETHODIMP get_Count(long* count) override;
    STDMETHODIMP get_Item(VARIANT index, VARIANT* item) override;
    STDMETHODIMP Add(VARIANT item) override;
    STDMETHODIMP Remove(VARIANT index) override;
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;

private:
    // Throws com::Error for what is no index of an item.
    std::size_t position(const VARIANT& index) const;

    std::vector<com::Variant> items_;
};

}  // namespace kel::bench
