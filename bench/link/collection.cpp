#include "bench/link/collection.h"

#include "com/variant_enumerator.h"

namespace kel::bench {

HRESULT Collection::get_Count(long* count) {
    return guarded<ICollection>([&] { com::out(count) = static_cast<long>(items_.size()); });
}

HRESULT Collection::get_Item(VARIANT index, VARIANT* item) {
    return guarded<ICollection>([&] {
        com::out(item) = VARIANT{};
        *item = com::Variant(items_[position(index)]).release();
    });
}

HRESULT Collection::Add(VARIANT item) {
    return guarded<ICollection>([&] { items_.emplace_back(item); });
}

HRESULT Collection::Remove(VARIANT index) {
    return guarded<ICollection>([&] {
        const auto place = items_.begin() + static_cast<std::ptrdiff_t>(position(index));
        // An object that goes with its last reference may come back here.
        const com::Variant removed = std::move(*place);
        items_.erase(place);
    });
}

HRESULT Collection::get__NewEnum(IUnknown** enumerator) {
    return guarded<ICollection>([&] {
        com::out(enumerator) = nullptr;
        const auto count = [this] { return static_cast<ULONG>(items_.size()); };
        const auto item = [this](ULONG index) { return items_[index]; };
        *enumerator = com::createObject<com::VariantEnumerator>(
                          nullptr, nullptr, com::ComPtr<IUnknown>(controlling()), count, item)
                          .Detach();
    });
}

std::size_t Collection::position(const VARIANT& index) const {
    const long number = com::Variant(index).convertedTo(VT_I4).get().lVal;
    if (number < 0 || static_cast<std::size_t>(number) >= items_.size()) {
        throw com::Error(DISP_E_BADINDEX);
    }
    return static_cast<std::size_t>(number);
}

}  // namespace kel::bench
