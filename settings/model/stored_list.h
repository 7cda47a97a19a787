#pragma once
// What counts as a text and as a list of the store, whatever other programs have left there.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kel::settings {

// Texts of this many bytes and more, their terminator included, count as missing.
inline constexpr std::size_t kLongestText = 500;

// The text that is kept as these bytes; nothing when they are none.
std::optional<std::string> textIn(std::string_view bytes);

// The texts of an entry, one for each field.
using ListEntry = std::vector<std::string>;

// Where a list is kept: its length, and the entries by their index, which are asked for in order.
class ListPlace {
public:
    virtual ~ListPlace() = default;

    // Nothing when there is none.
    virtual std::optional<std::uint32_t> count() = 0;
    virtual std::optional<std::string> text(std::uint32_t entry, const char* field) = 0;

    // False when it is not written.
    virtual bool setCount(std::uint32_t count) = 0;
    virtual bool setText(std::uint32_t entry, const char* field, const std::string& text) = 0;
};

// The entries up to the first incomplete one, in their order. There is at least one field.
std::vector<ListEntry> readList(ListPlace& place, std::span<const char* const> fields);

// Writes as far as it can. Entries that a longer list has left are not removed: readers know the
// length.
void writeList(ListPlace& place, std::span<const char* const> fields,
               std::span<const ListEntry> entries);

}  // namespace kel::settings
