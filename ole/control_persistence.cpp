// What a container saves of the control.
#include "com/text.h"
#include "ole/control.h"

namespace kel::ole {
namespace {

constexpr wchar_t kStreamName[] = L"Contents";

VARTYPE typeOf(PropertyKind kind) {
    switch (kind) {
        case PropertyKind::Flag:
            return VT_BOOL;
        case PropertyKind::Colour:
            return VT_I4;
        case PropertyKind::Font:
            return VT_DISPATCH;
    }
    return VT_EMPTY;
}

// Null for a value that cannot be converted to the kind, and for a null object.
std::optional<com::Variant> convertedTo(PropertyKind kind, const com::Variant& value) {
    try {
        // Large numbers without a sign are colours as well.
        if (kind == PropertyKind::Colour && value.type() == VT_UI4)
            return com::Variant(static_cast<long>(value.get().ulVal));
        com::Variant converted = value.convertedTo(typeOf(kind));
        if (kind == PropertyKind::Font && !converted.get().pdispVal) return std::nullopt;
        return converted;
    } catch (const com::Error&) {
        return std::nullopt;
    }
}

}  // namespace

std::vector<NamedProperty> Control::properties() const {
    std::vector<NamedProperty> properties;
    for (const PersistedProperty& each : description().properties)
        properties.push_back({each.name, each.kind, persisted(each.member)});
    return properties;
}

void Control::apply(const std::vector<NamedProperty>& properties) {
    for (const NamedProperty& property : properties) {
        for (const PersistedProperty& each : description().properties) {
            if (each.kind == property.kind && property.name == each.name)
                restore(each.member, property.value);
        }
    }
    isDirty_ = false;
    // What a property refused is no failure of the call.
    SetErrorInfo(0, nullptr);
}

HRESULT Control::GetClassID(CLSID* identifier) {
    return GetUserClassID(identifier);
}

HRESULT Control::InitNew() {
    isDirty_ = true;
    return S_OK;
}

HRESULT Control::Load(IStream* stream) {
    return answer<IPersistStreamInit>([&] {
        if (!stream) throw com::Error(E_POINTER);
        apply(readProperties(*stream));
    });
}

HRESULT Control::Save(IStream* stream, BOOL clearDirty) {
    return answer<IPersistStreamInit>([&] {
        if (!stream) throw com::Error(E_POINTER);
        writeProperties(*stream, properties());
        if (clearDirty) isDirty_ = false;
    });
}

HRESULT Control::GetSizeMax(ULARGE_INTEGER* size) {
    return answer<IPersistStreamInit>([&] { com::out(size).QuadPart = kLargestPropertyData; });
}

HRESULT Control::Load(IPropertyBag* bag, IErrorLog* log) {
    return answer<IPersistPropertyBag>([&] {
        if (!bag) throw com::Error(E_POINTER);
        std::vector<NamedProperty> read;
        for (const PersistedProperty& each : description().properties) {
            com::Variant value;
            VARIANT* place = value.put();
            // Tells the bag into what to convert.
            place->vt = typeOf(each.kind);
            if (each.kind == PropertyKind::Font) place->pdispVal = nullptr;
            if (FAILED(bag->Read(each.name, place, log))) continue;
            if (auto converted = convertedTo(each.kind, value))
                read.push_back({each.name, each.kind, std::move(*converted)});
        }
        apply(read);
    });
}

HRESULT Control::Save(IPropertyBag* bag, BOOL clearDirty, BOOL) {
    return answer<IPersistPropertyBag>([&] {
        if (!bag) throw com::Error(E_POINTER);
        for (const NamedProperty& property : properties()) {
            com::Variant value = property.value;
            com::check(bag->Write(property.name.c_str(), const_cast<VARIANT*>(&value.get())), bag);
        }
        if (clearDirty) isDirty_ = false;
    });
}

HRESULT Control::InitNew(IStorage*) {
    return InitNew();
}

HRESULT Control::Load(IStorage* storage) {
    return answer<IPersistStorage>([&] {
        if (!storage) throw com::Error(E_POINTER);
        com::ComPtr<IStream> stream;
        com::check(
            storage->OpenStream(kStreamName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream),
            storage);
        apply(readProperties(*stream.Get()));
    });
}

HRESULT Control::Save(IStorage* storage, BOOL) {
    return answer<IPersistStorage>([&] {
        if (!storage) throw com::Error(E_POINTER);
        com::ComPtr<IStream> stream;
        com::check(
            storage->CreateStream(kStreamName, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                                  0, 0, &stream),
            storage);
        writeProperties(*stream.Get(), properties());
    });
}

HRESULT Control::SaveCompleted(IStorage*) {
    isDirty_ = false;
    return S_OK;
}

}  // namespace kel::ole
