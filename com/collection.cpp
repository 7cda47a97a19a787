#include "com/collection.h"

#include "com/variant_enumerator.h"

namespace kel::com {

HRESULT Collection::get_Count(long* count) {
    return guarded<ICollection>([&] { out(count) = static_cast<long>(items_.size()); });
}

HRESULT Collection::get_Item(VARIANT index, VARIANT* item) {
    return guarded<ICollection>([&] {
        out(item) = VARIANT{};
        *item = Variant(*at(index)).release();
    });
}

HRESULT Collection::Add(VARIANT item) {
    return guarded<ICollection>([&] { items_.emplace_back(item); });
}

HRESULT Collection::Remove(VARIANT index) {
    return guarded<ICollection>([&] {
        const auto place = at(index);
        // An object that goes with its last reference may come back here.
        const Variant removed = std::move(*place);
        items_.erase(place);
    });
}

HRESULT Collection::get__NewEnum(IUnknown** enumerator) {
    return guarded<ICollection>([&] {
        out(enumerator) = nullptr;
        *enumerator = VariantEnumerator::make(
            controlling(), [this] { return static_cast<ULONG>(items_.size()); },
            [this](ULONG index) { return items_[index]; });
    });
}

std::vector<Variant>::iterator Collection::at(const VARIANT& index) {
    const long number = Variant(index).convertedTo(VT_I4).get().lVal;
    if (number < 0 || static_cast<std::size_t>(number) >= items_.size()) {
        throw Error(DISP_E_BADINDEX);
    }
    return items_.begin() + number;
}

}  // namespace kel::com
