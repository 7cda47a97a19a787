#include "ole/property_data.h"

#include <cstring>
#include <optional>
#include <string_view>

#include "ole/font.h"

namespace kel::ole {
namespace {

// In front of everything: who wrote it, and how many bytes follow.
struct Header {
    BYTE signature[4];
    DWORD size;
};
constexpr BYTE kSignature[] = {'K', 'E', 'L', 1};

struct FontRecord {
    LONGLONG size;
    SHORT weight;
    SHORT characterSet;
    WORD style;
    WORD reserved;
};
constexpr WORD kItalic = 1;
constexpr WORD kUnderlined = 2;
constexpr WORD kStruckOut = 4;
constexpr LONGLONG kLargestFont = 1638 * 10000LL;

class Writer {
public:
    template <class Value>
    void put(const Value& value) {
        const auto* bytes = reinterpret_cast<const BYTE*>(&value);
        bytes_.insert(bytes_.end(), bytes, bytes + sizeof value);
    }
    void put(std::wstring_view text) {
        put(static_cast<WORD>(text.size()));
        for (const wchar_t character : text)
            put(character);
    }
    void put(const Writer& part) {
        put(static_cast<WORD>(part.bytes_.size()));
        bytes_.insert(bytes_.end(), part.bytes_.begin(), part.bytes_.end());
    }
    const std::vector<BYTE>& bytes() const { return bytes_; }

private:
    std::vector<BYTE> bytes_;
};

class Reader {
public:
    Reader(const BYTE* bytes, std::size_t size) : bytes_(bytes), left_(size) {}

    bool isAtEnd() const { return left_ == 0; }

    template <class Value>
    Value take() {
        Value value;
        std::memcpy(&value, skip(sizeof value), sizeof value);
        return value;
    }
    std::wstring takeText() {
        const std::size_t length = take<WORD>();
        std::wstring text(length, L'\0');
        std::memcpy(text.data(), skip(length * sizeof(wchar_t)), length * sizeof(wchar_t));
        return text;
    }
    Reader takePart() {
        const std::size_t size = take<WORD>();
        return Reader(skip(size), size);
    }

private:
    const BYTE* skip(std::size_t size) {
        if (size > left_) throw com::Error(STG_E_DOCFILECORRUPT);
        left_ -= size;
        return std::exchange(bytes_, bytes_ + size);
    }

    const BYTE* bytes_;
    std::size_t left_;
};

void putFont(Writer& writer, IDispatch* object) {
    com::ComPtr<IFontDisp> font;
    com::check(object->QueryInterface(IID_PPV_ARGS(&font)));
    const FontData data = fontData(font.Get());
    WORD style = data.isItalic ? kItalic : 0;
    if (data.isUnderlined) style |= kUnderlined;
    if (data.isStruckOut) style |= kStruckOut;
    writer.put(FontRecord{data.size, data.weight, data.characterSet, style, 0});
    writer.put(std::wstring_view(data.name));
}

std::optional<com::Variant> takeFont(Reader& reader) {
    const auto record = reader.take<FontRecord>();
    const FontData data{reader.takeText(),
                        record.size,
                        record.weight,
                        record.characterSet,
                        (record.style & kItalic) != 0,
                        (record.style & kUnderlined) != 0,
                        (record.style & kStruckOut) != 0};
    if (data.name.empty() || data.name.size() >= LF_FACESIZE) return std::nullopt;
    if (data.size <= 0 || data.size > kLargestFont) return std::nullopt;
    return com::Variant(makeFont(data).Get());
}

void putValue(Writer& writer, const NamedProperty& property) {
    const VARIANT& value = property.value.get();
    switch (property.kind) {
        case PropertyKind::Flag:
            return writer.put(static_cast<WORD>(com::isTrue(value.boolVal)));
        case PropertyKind::Colour:
            return writer.put(value.lVal);
        case PropertyKind::Font:
            return putFont(writer, value.pdispVal);
    }
}

std::optional<com::Variant> takeValue(PropertyKind kind, Reader& reader) {
    switch (kind) {
        case PropertyKind::Flag:
            return com::Variant(reader.take<WORD>() != 0);
        case PropertyKind::Colour:
            return com::Variant(reader.take<long>());
        case PropertyKind::Font:
            return takeFont(reader);
    }
    return std::nullopt;
}

void readAll(IStream& stream, void* place, ULONG size) {
    auto* bytes = static_cast<BYTE*>(place);
    while (size > 0) {
        ULONG taken = 0;
        com::check(stream.Read(bytes, size, &taken));
        if (taken == 0 || taken > size) throw com::Error(STG_E_READFAULT);
        bytes += taken;
        size -= taken;
    }
}

void writeAll(IStream& stream, const void* bytes, ULONG size) {
    ULONG taken = 0;
    com::check(stream.Write(bytes, size, &taken));
    if (taken != size) throw com::Error(STG_E_MEDIUMFULL);
}

}  // namespace

void writeProperties(IStream& stream, const std::vector<NamedProperty>& properties) {
    Writer writer;
    for (const NamedProperty& property : properties) {
        Writer value;
        putValue(value, property);
        writer.put(std::wstring_view(property.name));
        writer.put(property.kind);
        writer.put(value);
    }
    Header header{};
    std::memcpy(header.signature, kSignature, sizeof kSignature);
    header.size = static_cast<DWORD>(writer.bytes().size());
    writeAll(stream, &header, sizeof header);
    writeAll(stream, writer.bytes().data(), header.size);
}

std::vector<NamedProperty> readProperties(IStream& stream) {
    Header header{};
    readAll(stream, &header, sizeof header);
    if (std::memcmp(header.signature, kSignature, sizeof kSignature) != 0 ||
        header.size > kLargestPropertyData) {
        throw com::Error(STG_E_INVALIDHEADER, L"The stream holds no properties of a control");
    }
    std::vector<BYTE> bytes(header.size);
    readAll(stream, bytes.data(), header.size);

    std::vector<NamedProperty> properties;
    for (Reader reader(bytes.data(), bytes.size()); !reader.isAtEnd();) {
        std::wstring name = reader.takeText();
        const auto kind = reader.take<PropertyKind>();
        Reader part = reader.takePart();
        if (auto value = takeValue(kind, part))
            properties.push_back({std::move(name), kind, std::move(*value)});
    }
    return properties;
}

}  // namespace kel::ole
