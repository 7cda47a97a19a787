#include "hosts/trace/collection.h"

#include "com/variant_enumerator.h"

namespace kel::trace {

HRESULT Container::get_Count(long* count) {
    return guarded<ICollection>([&] { com::out(count) = static_cast<long>(items_.size()); });
}

HRESULT Container::get_Item(VARIANT index, VARIANT* item) {
    return guarded<ICollection>([&] {
        com::out(item) = VARIANT{};
        *item = com::Variant(*at(index)).release();
    });
}

HRESULT Container::Add(VARIANT item) {
    return guarded<ICollection>([&] { items_.emplace_back(item); });
}

HRESULT Container::Remove(VARIANT index) {
    return guarded<ICollection>([&] {
        const auto place = at(index);
        // An object that goes with its last reference may come back here.
        const com::Variant removed = std::move(*place);
        items_.erase(place);
    });
}

HRESULT Container::get__NewEnum(IUnknown** enumerator) {
    return guarded<ICollection>([&] {
        com::out(enumerator) = nullptr;
        *enumerator = com::VariantEnumerator::make(
            controlling(), [this] { return static_cast<ULONG>(items_.size()); },
            [this](ULONG index) { return items_[index]; });
    });
}

std::vector<com::Variant>::iterator Container::at(const VARIANT& index) {
    const long number = com::Variant(index).convertedTo(VT_I4).get().lVal;
    if (number < 0 || static_cast<std::size_t>(number) >= items_.size()) {
        throw com::Error(DISP_E_BADINDEX);
    }
    return items_.begin() + number;
}

}  // namespace kel::trace
