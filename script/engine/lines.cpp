#include "script/engine/lines.h"

#include <algorithm>

namespace kel::script {

// text := { line-end } { line line-end { line-end } } [ line ]       line-end := CR | LF
std::optional<std::string_view> LineReader::next() {
    while (!rest_.empty()) {
        const auto end =
            std::find_if(rest_.begin(), rest_.end(), [](char c) { return c == '\r' || c == '\n'; });
        const auto size = static_cast<std::size_t>(end - rest_.begin());
        const std::string_view line = rest_.substr(0, size);
        rest_.remove_prefix(std::min(size + 1, rest_.size()));
        if (line.empty()) continue;
        if (const auto stripped = strip(line)) return stripped;
    }
    return std::nullopt;
}

// line := { blank } [ text ] { blank } [ "//" comment ]
//
// A comment starts inside quotes too. Nothing is left of a line that has a comment and no text; a
// line of blanks alone is an empty line that counts.
std::optional<std::string_view> LineReader::strip(std::string_view line) const {
    std::size_t end = 0;
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] == '/' && i + 1 < line.size() && line[i + 1] == '/') {
            if (end == 0) return std::nullopt;
            break;
        }
        const std::size_t width = characters_.width(line, i);
        if (width == 2 || !characters_.isBlank(line[i])) end = i + width;
        i += width;
    }
    std::size_t start = 0;
    while (start < end && characters_.isBlank(line[start]))
        ++start;
    return line.substr(start, end - start);
}

}  // namespace kel::script
