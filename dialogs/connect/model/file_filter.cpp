#include "dialogs/connect/model/file_filter.h"

namespace kel::connect {
namespace {

constexpr std::wstring_view kDefault = L"All Files (.*)|*.*|";
constexpr std::wstring_view kAllFiles = L"*.*";

// Takes the part up to the next bar or the end of the text.
std::wstring takePart(std::wstring_view& rest) {
    const std::size_t bar = rest.find(L'|');
    std::wstring part(rest.substr(0, bar));
    rest.remove_prefix(bar == std::wstring_view::npos ? rest.size() : bar + 1);
    // It would end the part for the chooser.
    std::erase(part, L'\0');
    return part;
}

}  // namespace

std::wstring chooserFilter(std::wstring_view filter) {
    std::wstring list;
    for (std::wstring_view rest = filter.empty() ? kDefault : filter; !rest.empty();) {
        const std::wstring description = takePart(rest);
        const std::wstring pattern = takePart(rest);
        if (description.empty() && pattern.empty()) continue;
        list += description.empty() ? pattern : description;
        list += L'\0';
        list += pattern.empty() ? kAllFiles : pattern;
        list += L'\0';
    }
    return list.empty() ? chooserFilter({}) : list;
}

}  // namespace kel::connect
