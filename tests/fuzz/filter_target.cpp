#include <algorithm>

#include "dialogs/connect/model/file_filter.h"
#include "tests/fuzz/target.h"

namespace kel::fuzz {

void filterAnything(std::string_view input) {
    std::wstring filter;
    for (std::size_t i = 0; i + 1 < input.size(); i += 2) {
        filter += static_cast<wchar_t>(static_cast<unsigned char>(input[i]) |
                                       static_cast<unsigned char>(input[i + 1]) << 8);
    }
    const std::wstring list = connect::chooserFilter(filter);
    require(list.find(L'|') == std::wstring::npos, "no bar is left");
    // The chooser takes pairs of texts, each up to its NUL, until an empty one.
    require(!list.empty() && list.front() != L'\0' && list.back() == L'\0' &&
                list.find(std::wstring(2, L'\0')) == std::wstring::npos,
            "the chooser reads to the end of the list");
    require(std::ranges::count(list, L'\0') % 2 == 0, "every kind of file has its pattern");
    require(list.size() <= 3 * filter.size() + 32, "the list is not much longer than the text");

    std::wstring again = list;
    std::ranges::replace(again, L'\0', L'|');
    require(connect::chooserFilter(again) == list, "a list that is well formed stays as it is");
}

}  // namespace kel::fuzz
