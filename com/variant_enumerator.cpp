#include "com/variant_enumerator.h"

#include <algorithm>

namespace kel::com {

IUnknown* VariantEnumerator::make(ComPtr<IUnknown> owner, Count count, Item item) {
    ComPtr<IEnumVARIANT> enumerator =
        makeObject<VariantEnumerator>(std::move(owner), std::move(count), std::move(item));
    return enumerator.Detach();
}

HRESULT VariantEnumerator::Next(ULONG wanted, VARIANT* values, ULONG* fetched) {
    return guarded<IEnumVARIANT>([&] {
        if (fetched) *fetched = 0;
        if (!values || (wanted > 1 && !fetched)) throw Error(E_POINTER);
        ULONG given = 0;
        for (; given < wanted && position_ < count_(); ++given) {
            values[given] = item_(position_).release();
            ++position_;
            if (fetched) *fetched = given + 1;
        }
        return given == wanted ? S_OK : S_FALSE;
    });
}

HRESULT VariantEnumerator::Skip(ULONG skipped) {
    return guarded<IEnumVARIANT>([&] {
        const ULONG count = count_();
        const ULONG left = count - std::min(position_, count);
        position_ += std::min(skipped, left);
        return skipped <= left ? S_OK : S_FALSE;
    });
}

HRESULT VariantEnumerator::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT VariantEnumerator::Clone(IEnumVARIANT** result) {
    return guarded<IEnumVARIANT>([&] {
        out(result) = nullptr;
        *result = makeObject<VariantEnumerator>(owner_, count_, item_, position_).Detach();
    });
}

}  // namespace kel::com
