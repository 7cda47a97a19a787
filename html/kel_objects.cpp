#include "html/kel_objects.h"

#include <algorithm>

#include "com/text.h"
#include "com/variant_enumerator.h"

namespace kel::html {

KelObjects::Entries::iterator KelObjects::find(std::wstring_view name) {
    return std::ranges::find_if(
        entries_, [&](const Entry& entry) { return com::sameName(entry.name, name); });
}

KelObjects::Entries::iterator KelObjects::at(std::wstring_view name) {
    const auto entry = find(name);
    if (entry == entries_.end())
        throw com::Error(DISP_E_BADINDEX, L"There is no object '" + std::wstring(name) + L"'");
    return entry;
}

KelObjects::Entries::iterator KelObjects::at(const VARIANT& index) {
    const com::Variant value(index);
    if (value.type() == VT_BSTR) return at(com::view(value.get().bstrVal));
    const long number = value.convertedTo(VT_I4).get().lVal;
    if (number < 0 || static_cast<std::size_t>(number) >= entries_.size())
        throw com::Error(DISP_E_BADINDEX, L"There is no object " + std::to_wstring(number));
    return entries_.begin() + number;
}

void KelObjects::put(std::wstring_view name, IDispatch* object) {
    if (name.empty()) throw com::Error(E_INVALIDARG, L"An object needs a name");
    const auto known = find(name);
    if (!object) {
        if (known == entries_.end()) return;
        // An object that goes with its last reference may come back here.
        const com::ComPtr<IDispatch> removed = known->object;
        entries_.erase(known);
        return;
    }
    if (known != entries_.end()) {
        const com::ComPtr<IDispatch> replaced = known->object;
        known->object = object;
        return;
    }
    const std::wstring added(name);
    entries_.push_back({added, object});
    const std::set<TableListener*> listeners = listeners_;
    for (TableListener* const listener : listeners)
        if (listeners_.contains(listener)) listener->nameAdded(added);
}

HRESULT KelObjects::get_Item(BSTR name, IDispatch** object) {
    return guarded<IKelObjects>([&] {
        com::out(object) = nullptr;
        com::ComPtr<IDispatch>(at(com::view(name))->object).CopyTo(object);
    });
}

HRESULT KelObjects::put_Item(BSTR name, IDispatch* object) {
    return guarded<IKelObjects>([&] {
        const com::KeepAlive alive(*this);
        put(com::view(name), object);
    });
}

HRESULT KelObjects::get_Count(long* count) {
    return guarded<IKelObjects>([&] { com::out(count) = static_cast<long>(entries_.size()); });
}

HRESULT KelObjects::get_Name(long index, BSTR* name) {
    return guarded<IKelObjects>([&] {
        com::out(name) = nullptr;
        *name = com::Bstr(std::wstring_view(at(com::Variant(index).get())->name)).release();
    });
}

HRESULT KelObjects::get_At(VARIANT index, IDispatch** object) {
    return guarded<IKelObjects>([&] {
        com::out(object) = nullptr;
        com::ComPtr<IDispatch>(at(index)->object).CopyTo(object);
    });
}

HRESULT KelObjects::put_At(VARIANT index, IDispatch* object) {
    return guarded<IKelObjects>([&] {
        const com::KeepAlive alive(*this);
        const com::Variant value(index);
        put(value.type() == VT_BSTR ? std::wstring(com::view(value.get().bstrVal))
                                    : at(index)->name,
            object);
    });
}

HRESULT KelObjects::get__NewEnum(IUnknown** enumerator) {
    return guarded<IKelObjects2>([&] {
        com::out(enumerator) = nullptr;
        *enumerator = com::VariantEnumerator::make(
            controlling(), [this] { return static_cast<ULONG>(entries_.size()); },
            [this](ULONG index) { return com::Variant(entries_[index].object.Get()); });
    });
}

}  // namespace kel::html
