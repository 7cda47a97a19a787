#include <algorithm>
#include <map>

#include "settings/model/stored_list.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {
namespace {

constexpr const char* kFields[] = {"Name", "Address", "Port"};

// What another program may have left, as the input tells.
class HostileList final : public settings::ListPlace {
public:
    explicit HostileList(std::string_view input) : rest_(input) { count_ = number(4); }

    std::optional<std::uint32_t> count() override { return count_; }
    std::optional<std::string> text(std::uint32_t entry, const char* field) override {
        require(entry < count_, "nothing is asked for beyond the length");
        require(!isMissing_, "nothing is asked for after what is missing");
        require(entry == asked_ / 3 && field == kFields[asked_ % 3], "all is asked for in order");
        ++asked_;
        auto text = next();
        isMissing_ = !text;
        return text;
    }
    bool setCount(std::uint32_t) override { throw Violation("reading writes nothing"); }
    bool setText(std::uint32_t, const char*, const std::string&) override {
        throw Violation("reading writes nothing");
    }

    std::size_t found() const { return asked_ - isMissing_; }

private:
    std::uint32_t number(std::size_t size) {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < std::min(size, rest_.size()); ++i)
            number |= std::uint32_t(static_cast<unsigned char>(rest_[i])) << 8 * i;
        rest_.remove_prefix(std::min(size, rest_.size()));
        return number;
    }
    std::optional<std::string> next() {
        if (rest_.empty()) return std::nullopt;
        const std::size_t size = number(2);
        if (size == 0xFFFF) return std::nullopt;
        const std::vector<char> bytes(rest_.begin(),
                                      rest_.begin() + std::ptrdiff_t(std::min(size, rest_.size())));
        rest_.remove_prefix(bytes.size());
        auto text = settings::textIn({bytes.data(), bytes.size()});
        require(!text || (text->size() < bytes.size() && bytes[text->size()] == '\0' &&
                          std::equal(text->begin(), text->end(), bytes.begin())),
                "a text is what stands before its end");
        require(!text || text->size() + 1 < settings::kLongestText, "a text is not too long");
        return text;
    }

    std::string_view rest_;
    std::uint32_t count_ = 0;
    std::size_t asked_ = 0;
    bool isMissing_ = false;
};

// Keeps what is written, with its terminator.
class KeptList final : public settings::ListPlace {
public:
    std::optional<std::uint32_t> count() override { return count_; }
    std::optional<std::string> text(std::uint32_t entry, const char* field) override {
        const auto found = texts_.find({entry, field});
        return found == texts_.end() ? std::nullopt : settings::textIn(found->second);
    }
    bool setCount(std::uint32_t count) override {
        count_ = count;
        return true;
    }
    bool setText(std::uint32_t entry, const char* field, const std::string& text) override {
        texts_[{entry, field}] = text + '\0';
        return true;
    }

private:
    std::uint32_t count_ = 0;
    std::map<std::pair<std::uint32_t, std::string>, std::string> texts_;
};

}  // namespace

void recallAnything(std::string_view input) {
    HostileList hostile(input);
    const std::vector<settings::ListEntry> entries = settings::readList(hostile, kFields);
    require(entries.size() == hostile.found() / 3, "every whole entry is given, and no other");
    require(std::ranges::all_of(entries, [](const auto& entry) { return entry.size() == 3; }),
            "an entry has all its fields");
    KeptList kept;
    settings::writeList(kept, kFields, entries);
    require(settings::readList(kept, kFields) == entries, "what is written is read");
}

}  // namespace kel::fuzz
