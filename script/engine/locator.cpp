#include "script/engine/locator.h"

#include <algorithm>

namespace kel::script {

Position Locator::locate(const char* where) {
    const auto offset = static_cast<std::size_t>(where - text_.data());
    if (offset < lineStart_) {
        line_ = 1;
        lineStart_ = scanned_ = 0;
    }
    while (scanned_ < offset) {
        if (!skipToBreak(offset)) break;
        ++line_;
        lineStart_ = ++scanned_;
    }
    return {line_, offset - lineStart_ + 1};
}

// False when there is none before `end`. In texts without a carriage return the platform's own
// search, which is quicker, finds it.
bool Locator::skipToBreak(std::size_t end) {
    if (!hasReturns_) {
        const std::string_view ahead = text_.substr(scanned_, end - scanned_);
        scanned_ += std::min(ahead.find('\n'), ahead.size());
    } else {
        while (scanned_ < end && !isBreak(scanned_))
            ++scanned_;
    }
    return scanned_ < end;
}

bool Locator::isBreak(std::size_t offset) const {
    if (text_[offset] == '\n') return true;
    return text_[offset] == '\r' && (offset + 1 == text_.size() || text_[offset + 1] != '\n');
}

}  // namespace kel::script
