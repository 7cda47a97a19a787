#pragma once
// Lists of the store: their length, and a key for each entry, named by its index.

#include <span>
#include <string>
#include <vector>

namespace kel::settings {

// The texts of an entry, one for each field.
using ListEntry = std::vector<std::string>;

// The entries up to the first incomplete one, in their order.
std::vector<ListEntry> readList(const std::string& section, std::span<const char* const> fields);

// Writes as far as it can. Entries that a longer list has left are not removed: readers know the
// length.
void writeList(const std::string& section, std::span<const char* const> fields,
               std::span<const ListEntry> entries);

}  // namespace kel::settings
