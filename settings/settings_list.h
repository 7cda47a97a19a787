#pragma once
// Lists of the store: their length, and a key for each entry, named by its index.

#include <span>
#include <string>
#include <vector>

#include "settings/model/stored_list.h"

namespace kel::settings {

// As those of a ListPlace, for a section.
std::vector<ListEntry> readList(const std::string& section, std::span<const char* const> fields);
void writeList(const std::string& section, std::span<const char* const> fields,
               std::span<const ListEntry> entries);

}  // namespace kel::settings
