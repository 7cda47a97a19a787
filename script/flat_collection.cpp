#include "script/flat_collection.h"

#include "com/text.h"
#include "com/variant_enumerator.h"

namespace kel::script {
com::ComPtr<FlatCollection> FlatCollection::of(std::span<const std::string> parameters) {
    com::ComPtr<FlatCollection> collection = com::makeObject<FlatCollection>();
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        collection->append(std::to_wstring(i), parameters[i]);
    }
    return collection;
}

void FlatCollection::append(std::wstring name, std::string_view value) {
    entries_.push_back({std::move(name), com::Variant(value)});
}

const FlatCollection::Entry& FlatCollection::find(const VARIANT& index) const {
    const com::Variant key(index);
    if (key.type() == VT_BSTR) {
        const std::wstring_view name = com::view(key.get().bstrVal);
        for (const Entry& entry : entries_) {
            if (com::sameName(entry.name, name)) return entry;
        }
        throw com::Error(DISP_E_BADINDEX, L"There is no value with this name");
    }
    const long position = key.convertedTo(VT_I4).get().lVal;
    if (position < 0 || static_cast<std::size_t>(position) >= entries_.size()) {
        throw com::Error(DISP_E_BADINDEX, L"There is no value with this index");
    }
    return entries_[position];
}

HRESULT FlatCollection::get_Count(long* count) {
    return guarded<IFlatCollection>([&] { com::out(count) = static_cast<long>(entries_.size()); });
}

HRESULT FlatCollection::get_Item(VARIANT index, VARIANT* value) {
    return guarded<IFlatCollection>([&] {
        VariantInit(&com::out(value));
        *value = com::Variant(find(index).value).release();
    });
}

HRESULT FlatCollection::get_Name(long index, BSTR* name) {
    return guarded<IFlatCollection>([&] {
        com::out(name) = nullptr;
        *name = com::Bstr(find(com::Variant(index).get()).name).release();
    });
}

HRESULT FlatCollection::Add(BSTR name, VARIANT value) {
    return guarded<IFlatCollection>([&] {
        entries_.push_back({std::wstring(com::view(name)), com::Variant(value)});
    });
}

HRESULT FlatCollection::get__NewEnum(IUnknown** enumerator) {
    return guarded<IFlatCollection>([&] {
        com::out(enumerator) = nullptr;
        *enumerator = com::VariantEnumerator::make(
            controlling(), [this] { return static_cast<ULONG>(entries_.size()); },
            [this](ULONG index) { return entries_[index].value; });
    });
}

}  // namespace kel::script
