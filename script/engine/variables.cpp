#include "script/engine/variables.h"

#include <utility>

namespace kel::script {

const std::string* VariableStore::find(std::string_view name) const {
    const auto found = indexOfFolded_.find(rules_.fold(name));
    return found == indexOfFolded_.end() ? nullptr : &variables_[found->second].value;
}

void VariableStore::set(std::string_view name, std::string value) {
    const auto [place, isNew] = indexOfFolded_.try_emplace(rules_.fold(name), variables_.size());
    if (!isNew) {
        variables_[place->second].value = std::move(value);
        return;
    }
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
