#pragma once
// From a script's text to its lines.

#include <optional>
#include <string_view>

#include "script/engine/text_rules.h"

namespace kel::script {

// Hands out the lines that count, without their comments and the blanks around them.
class LineReader {
public:
    // Both must outlive the reader.
    LineReader(std::string_view text, const Characters& characters)
        : rest_(text),
          hasReturns_(text.find('\r') != std::string_view::npos),
          characters_(characters) {}

    // Nothing at the end of the text.
    std::optional<std::string_view> next();

private:
    std::string_view takeLine();
    std::optional<std::string_view> strip(std::string_view line) const;
    std::optional<std::string_view> stripWideText(std::string_view line) const;

    std::string_view rest_;
    bool hasReturns_;
    // The first one in the rest, or its end, once it was looked for.
    const char* lineFeed_ = nullptr;
    const Characters& characters_;
};

}  // namespace kel::script
