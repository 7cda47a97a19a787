#include "settings/model/stored_list.h"

#include <utility>

namespace kel::settings {

std::optional<std::string> textIn(std::string_view bytes) {
    if (bytes.empty() || bytes.size() >= kLongestText || bytes.back() != '\0') return std::nullopt;
    return std::string(bytes.substr(0, bytes.find('\0')));
}

std::vector<ListEntry> readList(ListPlace& place, std::span<const char* const> fields) {
    std::vector<ListEntry> entries;
    const std::uint32_t count = place.count().value_or(0);
    for (std::uint32_t i = 0; i < count; ++i) {
        ListEntry entry;
        for (const char* const field : fields) {
            auto text = place.text(i, field);
            if (!text) return entries;
            entry.push_back(*std::move(text));
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

void writeList(ListPlace& place, std::span<const char* const> fields,
               std::span<const ListEntry> entries) {
    if (!place.setCount(static_cast<std::uint32_t>(entries.size()))) return;
    for (std::uint32_t i = 0; i < entries.size(); ++i) {
        for (std::size_t field = 0; field < fields.size(); ++field) {
            if (!place.setText(i, fields[field], entries[i].at(field))) return;
        }
    }
}

}  // namespace kel::settings
