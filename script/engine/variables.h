#pragma once
// The named texts of scripts.

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "script/engine/text_rules.h"

namespace kel::script {

// Variables in the order of their first assignment. The caller keeps the store across runs; names
// are the same when they differ in letter case only.
class VariableStore {
public:
    struct Variable {
        std::string name;  // as first spelled
        std::string value;
    };

    // `rules` must outlive the store.
    explicit VariableStore(const TextRules& rules) : rules_(rules) {}

    // Null when there is no such variable; else valid until the next `set` of it or `clear`.
    const std::string* find(std::string_view name) const;

    void set(std::string_view name, std::string value);
    void clear();

    std::size_t size() const { return variables_.size(); }
    const Variable& operator[](std::size_t index) const { return variables_[index]; }

private:
    using Indices = std::map<std::string, std::size_t, std::less<>>;

    Indices::const_iterator indexOf(std::string_view name) const;

    const TextRules& rules_;
    std::deque<Variable> variables_;
    Indices indexOfFolded_;
};

}  // namespace kel::script
