#pragma once
// Installed directives or functions, in the order of their installation.

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "script/engine/text_rules.h"

namespace kel::script {

// Rows are only ever appended, so that indexes and references to rows stay valid while a handler
// that is being called adds rows.
template <class Handler>
class WordTable {
public:
    struct Row {
        std::string foldedName;
        long number = 0;
        Handler handler;
    };

    // `rules` must outlive the table.
    explicit WordTable(const TextRules& rules) : rules_(rules) {}

    void add(std::string_view name, long number, Handler handler) {
        rows_.push_back({rules_.fold(name), number, std::move(handler)});
    }

    // The first row at or after `from` that has the name in any letter case.
    std::optional<std::size_t> find(std::string_view name, std::size_t from) const {
        const std::string folded = rules_.fold(name);
        for (std::size_t row = from; row < rows_.size(); ++row) {
            if (rows_[row].foldedName == folded) return row;
        }
        return std::nullopt;
    }

    std::size_t size() const { return rows_.size(); }
    const Row& operator[](std::size_t row) const { return rows_[row]; }

private:
    const TextRules& rules_;
    std::deque<Row> rows_;
};

}  // namespace kel::script
