#include "ole/property_data.h"

#include "ole/font.h"

namespace kel::ole {
namespace {

StoredValue storedFont(IDispatch* object) {
    com::ComPtr<IFontDisp> font;
    com::check(object->QueryInterface(IID_PPV_ARGS(&font)));
    const FontData data = fontData(font.Get());
    return StoredFont{{data.name.begin(), data.name.end()},
                      data.size,
                      data.weight,
                      data.characterSet,
                      data.isItalic,
                      data.isUnderlined,
                      data.isStruckOut};
}

StoredValue stored(const NamedProperty& property) {
    const VARIANT& value = property.value.get();
    switch (property.kind) {
        case PropertyKind::Flag:
            return com::isTrue(value.boolVal);
        case PropertyKind::Colour:
            return static_cast<std::int32_t>(value.lVal);
        case PropertyKind::Font:
            break;
    }
    return storedFont(value.pdispVal);
}

struct ToVariant {
    com::Variant operator()(bool flag) const { return com::Variant(flag); }
    com::Variant operator()(std::int32_t colour) const {
        return com::Variant(static_cast<long>(colour));
    }
    com::Variant operator()(const StoredFont& font) const {
        return com::Variant(makeFont({{font.name.begin(), font.name.end()},
                                      font.size,
                                      font.weight,
                                      font.characterSet,
                                      font.isItalic,
                                      font.isUnderlined,
                                      font.isStruckOut})
                                .Get());
    }
};

std::string readAll(IStream& stream, std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t filled = 0; filled < size;) {
        const auto left = static_cast<ULONG>(size - filled);
        ULONG taken = 0;
        com::check(stream.Read(bytes.data() + filled, left, &taken));
        if (taken == 0 || taken > left) throw com::Error(STG_E_READFAULT);
        filled += taken;
    }
    return bytes;
}

}  // namespace

void writeProperties(IStream& stream, const std::vector<NamedProperty>& properties) {
    std::vector<StoredProperty> all;
    for (const NamedProperty& property : properties)
        all.push_back({{property.name.begin(), property.name.end()}, stored(property)});
    const std::string bytes = propertyBytes(all);
    const auto size = static_cast<ULONG>(bytes.size());
    ULONG taken = 0;
    com::check(stream.Write(bytes.data(), size, &taken));
    if (taken != size) throw com::Error(STG_E_MEDIUMFULL);
}

std::vector<NamedProperty> readProperties(IStream& stream) {
    const auto size = sizeAfterHeader(readAll(stream, kPropertyHeaderSize));
    if (!size)
        throw com::Error(STG_E_INVALIDHEADER, L"The stream holds no properties of a control");
    const auto stored = propertiesIn(readAll(stream, *size));
    if (!stored) throw com::Error(STG_E_DOCFILECORRUPT);

    std::vector<NamedProperty> properties;
    for (const StoredProperty& each : *stored)
        properties.push_back({{each.name.begin(), each.name.end()},
                              each.kind(),
                              std::visit(ToVariant{}, each.value)});
    return properties;
}

}  // namespace kel::ole
