#pragma once
// The persisted properties of a control as bytes. A container gives back what it once was given, or
// anything else: a document comes from anywhere.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kel::ole {

enum class PropertyKind : std::uint16_t { Flag = 1, Colour = 2, Font = 3 };

struct StoredFont {
    std::u16string name;
    std::int64_t size = 0;  // in ten thousandths of a point
    std::int16_t weight = 0;
    std::int16_t characterSet = 0;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruckOut = false;

    bool operator==(const StoredFont&) const = default;
};

// In the order of the kinds.
using StoredValue = std::variant<bool, std::int32_t, StoredFont>;

struct StoredProperty {
    std::u16string name;
    StoredValue value;

    PropertyKind kind() const { return static_cast<PropertyKind>(value.index() + 1); }
    bool operator==(const StoredProperty&) const = default;
};

// In front of everything: who wrote it, and how many bytes follow.
inline constexpr std::size_t kPropertyHeaderSize = 8;

// The greatest number of bytes that can follow.
inline constexpr std::size_t kLargestPropertyData = 0x10000;

// Header and properties. A font that no control can have is left out.
std::string propertyBytes(std::span<const StoredProperty> properties);

// How many bytes follow a header; nothing when it is none.
std::optional<std::size_t> sizeAfterHeader(std::string_view header);

// The properties in the bytes behind a header; nothing when they end in the middle of one. Left out
// is what has a kind, or a value, that no control can have.
std::optional<std::vector<StoredProperty>> propertiesIn(std::string_view bytes);

}  // namespace kel::ole
