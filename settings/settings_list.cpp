#include "settings/settings_list.h"

#include "settings/settings_key.h"

namespace kel::settings {
namespace {

constexpr char kCount[] = "Count";

}  // namespace

std::vector<ListEntry> readList(const std::string& section, std::span<const char* const> fields) {
    std::vector<ListEntry> entries;
    const SettingsKey list = SettingsKey::forReading(section);
    DWORD count = 0;
    if (!list.readNumber(kCount, count)) return entries;
    for (DWORD i = 0; i < count; ++i) {
        const SettingsKey key(list, std::to_string(i), KEY_READ);
        ListEntry entry;
        for (const char* const field : fields) {
            const auto text = key.readText(field);
            if (!text) return entries;
            entry.push_back(*text);
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

void writeList(const std::string& section, std::span<const char* const> fields,
               std::span<const ListEntry> entries) {
    const SettingsKey list = SettingsKey::forWriting(section);
    if (!list.writeNumber(kCount, static_cast<DWORD>(entries.size()))) return;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const SettingsKey key(list, std::to_string(i), KEY_WRITE);
        for (std::size_t field = 0; field < fields.size(); ++field) {
            if (!WriteStringSetting(key, fields[field], entries[i].at(field))) return;
        }
    }
}

}  // namespace kel::settings
