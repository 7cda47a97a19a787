#include "ole/model/property_bytes.h"

#include <cstring>
#include <utility>

namespace kel::ole {
namespace {

// The form is that of the only processors there are: the low byte first.
constexpr std::string_view kSignature = "KEL\x01";

constexpr std::uint16_t kItalic = 1;
constexpr std::uint16_t kUnderlined = 2;
constexpr std::uint16_t kStruckOut = 4;
constexpr std::size_t kLongestFontName = 31;
constexpr std::int64_t kLargestFont = 1638 * 10000LL;

bool isPossible(const StoredFont& font) {
    return !font.name.empty() && font.name.size() <= kLongestFontName && font.size > 0 &&
           font.size <= kLargestFont;
}

class Writer {
public:
    template <class Number>
    void put(Number number) {
        char bytes[sizeof number];
        std::memcpy(bytes, &number, sizeof number);
        bytes_.append(bytes, sizeof number);
    }
    void putText(std::u16string_view text) {
        put(static_cast<std::uint16_t>(text.size()));
        for (const char16_t character : text)
            put(character);
    }
    void putPart(const Writer& part) {
        put(static_cast<std::uint16_t>(part.bytes_.size()));
        bytes_ += part.bytes_;
    }
    const std::string& bytes() const { return bytes_; }

    void operator()(bool flag) { put(static_cast<std::uint16_t>(flag)); }
    void operator()(std::int32_t colour) { put(colour); }
    void operator()(const StoredFont& font) {
        std::uint16_t style = font.isItalic ? kItalic : 0;
        if (font.isUnderlined) style |= kUnderlined;
        if (font.isStruckOut) style |= kStruckOut;
        put(font.size);
        put(font.weight);
        put(font.characterSet);
        put(style);
        put(std::uint16_t{});
        putText(font.name);
    }

private:
    std::string bytes_;
};

// Thrown where the bytes end too early.
struct Cut {};

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    bool isAtEnd() const { return rest_.empty(); }

    template <class Number>
    Number take() {
        Number number;
        std::memcpy(&number, takeBytes(sizeof number).data(), sizeof number);
        return number;
    }
    std::u16string takeText() {
        const std::size_t length = take<std::uint16_t>();
        const std::string_view bytes = takeBytes(length * sizeof(char16_t));
        std::u16string text(length, u'\0');
        std::memcpy(text.data(), bytes.data(), bytes.size());
        return text;
    }
    Reader takePart() { return Reader(takeBytes(take<std::uint16_t>())); }

private:
    std::string_view takeBytes(std::size_t size) {
        if (size > rest_.size()) throw Cut();
        const std::string_view bytes = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return bytes;
    }

    std::string_view rest_;
};

std::optional<StoredValue> takeFont(Reader& reader) {
    StoredFont font;
    font.size = reader.take<std::int64_t>();
    font.weight = reader.take<std::int16_t>();
    font.characterSet = reader.take<std::int16_t>();
    const auto style = reader.take<std::uint16_t>();
    reader.take<std::uint16_t>();
    font.isItalic = (style & kItalic) != 0;
    font.isUnderlined = (style & kUnderlined) != 0;
    font.isStruckOut = (style & kStruckOut) != 0;
    font.name = reader.takeText();
    if (!isPossible(font)) return std::nullopt;
    return font;
}

std::optional<StoredValue> takeValue(PropertyKind kind, Reader& reader) {
    switch (kind) {
        case PropertyKind::Flag:
            return reader.take<std::uint16_t>() != 0;
        case PropertyKind::Colour:
            return reader.take<std::int32_t>();
        case PropertyKind::Font:
            return takeFont(reader);
    }
    return std::nullopt;
}

}  // namespace

std::string propertyBytes(std::span<const StoredProperty> properties) {
    Writer all;
    for (const StoredProperty& property : properties) {
        const auto* font = std::get_if<StoredFont>(&property.value);
        if (font && !isPossible(*font)) continue;
        Writer value;
        std::visit(value, property.value);
        all.putText(property.name);
        all.put(property.kind());
        all.putPart(value);
    }
    Writer header;
    header.put(static_cast<std::uint32_t>(all.bytes().size()));
    return std::string(kSignature) + header.bytes() + all.bytes();
}

std::optional<std::size_t> sizeAfterHeader(std::string_view header) {
    if (header.size() != kPropertyHeaderSize || !header.starts_with(kSignature))
        return std::nullopt;
    const std::size_t size = Reader(header.substr(kSignature.size())).take<std::uint32_t>();
    if (size > kLargestPropertyData) return std::nullopt;
    return size;
}

std::optional<std::vector<StoredProperty>> propertiesIn(std::string_view bytes) {
    std::vector<StoredProperty> properties;
    try {
        for (Reader reader(bytes); !reader.isAtEnd();) {
            std::u16string name = reader.takeText();
            const auto kind = reader.take<PropertyKind>();
            Reader part = reader.takePart();
            if (auto value = takeValue(kind, part))
                properties.push_back({std::move(name), *std::move(value)});
        }
    } catch (const Cut&) {
        return std::nullopt;
    }
    return properties;
}

}  // namespace kel::ole
