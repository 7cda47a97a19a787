#include "script/engine/variables.h"

#include <utility>

namespace kel::script {

// Most names are spelled as their folded form, which folding would only copy.
VariableStore::Indices::const_iterator VariableStore::indexOf(std::string_view name) const {
    const auto found = indexOfFolded_.find(name);
    return found == indexOfFolded_.end() ? indexOfFolded_.find(rules_.fold(name)) : found;
}

const std::string* VariableStore::find(std::string_view name) const {
    const auto found = indexOf(name);
    return found == indexOfFolded_.end() ? nullptr : &variables_[found->second].value;
}

void VariableStore::set(std::string_view name, std::string value) {
    if (const auto found = indexOf(name); found != indexOfFolded_.end()) {
        variables_[found->second].value = std::move(value);
        return;
    }
    const auto place = indexOfFolded_.emplace(rules_.fold(name), variables_.size()).first;
    try {
        variables_.push_back({std::string(name), std::move(value)});
    } catch (...) {
        indexOfFolded_.erase(place);
        throw;
    }
}

void VariableStore::clear() {
    indexOfFolded_.clear();
    variables_.clear();
}

}  // namespace kel::script
