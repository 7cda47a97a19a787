#pragma once
// The enumerator of a collection, for scripts and hosts that walk it.

#include <windows.h>

#include <oleauto.h>

#include <functional>

#include "com/object.h"
#include "com/variant.h"

namespace kel::com {

// Walks a collection by index, so that it may change meanwhile. `item` gives the value at an index,
// `count` the number of values now; both may throw. `owner` keeps the collection alive.
class VariantEnumerator final : public Object<VariantEnumerator, Plain<IEnumVARIANT>> {
public:
    static constexpr ClassDescription kClass{};

    using Count = std::function<ULONG()>;
    using Item = std::function<Variant(ULONG)>;

    // The answer of a collection to _NewEnum; the caller owns it.
    static IUnknown* make(ComPtr<IUnknown> owner, Count count, Item item);

    VariantEnumerator(ComPtr<IUnknown> owner, Count count, Item item, ULONG position = 0)
        : owner_(std::move(owner)),
          count_(std::move(count)),
          item_(std::move(item)),
          position_(position) {}

    STDMETHODIMP Next(ULONG wanted, VARIANT* values, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG skipped) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumVARIANT** result) override;

private:
    ComPtr<IUnknown> owner_;
    Count count_;
    Item item_;
    ULONG position_;
};

}  // namespace kel::com
