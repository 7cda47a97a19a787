#include "script/engine/lines.h"

#include <algorithm>

namespace kel::script {

// text := { line-end } { line line-end { line-end } } [ line ]       line-end := CR | LF
std::optional<std::string_view> LineReader::next() {
    while (!rest_.empty()) {
        const std::string_view line = takeLine();
        if (line.empty()) continue;
        if (const auto stripped = strip(line)) return stripped;
    }
    return std::nullopt;
}

// The next line feed is remembered: a text whose lines end with CR alone is not searched to its end
// for each of them.
std::string_view LineReader::takeLine() {
    const char* begin = rest_.data();
    if (!lineFeed_ || lineFeed_ < begin)
        lineFeed_ = begin + std::min(rest_.find('\n'), rest_.size());
    const std::string_view line(begin, static_cast<std::size_t>(lineFeed_ - begin));
    const std::size_t size = hasReturns_ ? std::min(line.find('\r'), line.size()) : line.size();
    rest_.remove_prefix(std::min(size + 1, rest_.size()));
    return line.substr(0, size);
}

// line := { blank } [ text ] { blank } [ "//" comment ]
//
// A comment starts inside quotes too. Nothing is left of a line that has a comment and no text; a
// line of blanks alone is an empty line that counts.
std::optional<std::string_view> LineReader::strip(std::string_view line) const {
    if (characters_.hasLeadBytes()) return stripWideText(line);
    const std::size_t size = std::min(line.find("//"), line.size());
    const std::string_view text = characters_.trim(line.substr(0, size));
    if (text.empty() && size < line.size()) return std::nullopt;
    return text;
}

// The same where the second half of a two-byte character may look like a blank or a mark.
std::optional<std::string_view> LineReader::stripWideText(std::string_view line) const {
    std::size_t end = 0;
    for (std::size_t i = 0; i < line.size();) {
        if (line.substr(i, 2) == "//") {
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
