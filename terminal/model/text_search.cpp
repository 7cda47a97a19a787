#include "terminal/model/text_search.h"

#include <algorithm>

#include "terminal/model/letter_case.h"

namespace kel::terminal {
namespace {

std::optional<std::size_t> place(std::size_t found) {
    if (found == std::wstring::npos) return std::nullopt;
    return found;
}

}  // namespace

TextSearch::TextSearch(std::wstring_view text, std::wstring_view wanted, bool matchesCase)
    : text_(text), wanted_(wanted) {
    if (matchesCase) return;
    std::transform(text_.begin(), text_.end(), text_.begin(), folded);
    std::transform(wanted_.begin(), wanted_.end(), wanted_.begin(), folded);
}

std::optional<std::size_t> TextSearch::next(std::size_t from) const {
    if (wanted_.empty()) return std::nullopt;
    const std::size_t found = text_.find(wanted_, from);
    return place(found != std::wstring::npos ? found : text_.find(wanted_));
}

std::optional<std::size_t> TextSearch::previous(std::size_t before) const {
    if (wanted_.empty()) return std::nullopt;
    const std::size_t found = before > 0 ? text_.rfind(wanted_, before - 1) : std::wstring::npos;
    return place(found != std::wstring::npos ? found : text_.rfind(wanted_));
}

std::size_t TextSearch::count() const {
    if (wanted_.empty()) return 0;
    std::size_t times = 0;
    for (std::size_t at = text_.find(wanted_); at != std::wstring::npos;
         at = text_.find(wanted_, at + wanted_.size()))
        ++times;
    return times;
}

}  // namespace kel::terminal
