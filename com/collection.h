#pragma once
// A collection of values, as instrument links have one.

#include <vector>

#include "com/object.h"
#include "com/variant.h"
#include "interfaces/KelUtils.h"

namespace kel::com {

class Collection final : public Object<Collection, Dual<ICollection>> {
public:
    static constexpr ClassDescription kClass{};

    STDMETHODIMP get_Count(long* count) override;
    STDMETHODIMP get_Item(VARIANT index, VARIANT* item) override;
    STDMETHODIMP Add(VARIANT item) override;
    STDMETHODIMP Remove(VARIANT index) override;
    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;

private:
    // Throws Error for what is no index of an item.
    std::vector<Variant>::iterator at(const VARIANT& index);

    std::vector<Variant> items_;
};

}  // namespace kel::com
