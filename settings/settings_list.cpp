#include "settings/settings_list.h"

#include "settings/settings_key.h"

namespace kel::settings {
namespace {

constexpr char kCount[] = "Count";

class RegistryList final : public ListPlace {
public:
    RegistryList(SettingsKey list, REGSAM access) : list_(std::move(list)), access_(access) {}

    std::optional<std::uint32_t> count() override {
        DWORD count = 0;
        if (!list_.readNumber(kCount, count)) return std::nullopt;
        return count;
    }
    std::optional<std::string> text(std::uint32_t entry, const char* field) override {
        return keyOf(entry).readText(field);
    }
    bool setCount(std::uint32_t count) override { return list_.writeNumber(kCount, count); }
    bool setText(std::uint32_t entry, const char* field, const std::string& text) override {
        return WriteStringSetting(keyOf(entry), field, text);
    }

private:
    const SettingsKey& keyOf(std::uint32_t entry) {
        if (entry_ != entry) key_ = SettingsKey(list_, std::to_string(entry), access_);
        entry_ = entry;
        return key_;
    }

    SettingsKey list_;
    REGSAM access_;
    std::optional<std::uint32_t> entry_;  // the one whose key is open
    SettingsKey key_;
};

}  // namespace

std::vector<ListEntry> readList(const std::string& section, std::span<const char* const> fields) {
    RegistryList place(SettingsKey::forReading(section), KEY_READ);
    return readList(place, fields);
}

void writeList(const std::string& section, std::span<const char* const> fields,
               std::span<const ListEntry> entries) {
    RegistryList place(SettingsKey::forWriting(section), KEY_WRITE);
    writeList(place, fields, entries);
}

}  // namespace kel::settings
