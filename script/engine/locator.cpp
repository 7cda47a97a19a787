#include "script/engine/locator.h"

namespace kel::script {

Position Locator::locate(const char* where) {
    const auto offset = static_cast<std::size_t>(where - text_.data());
    if (offset < lineStart_) {
        line_ = 1;
        lineStart_ = scanned_ = 0;
    }
    for (; scanned_ < offset; ++scanned_) {
        const char c = text_[scanned_];
        const bool isPair = c == '\r' && scanned_ + 1 < text_.size() && text_[scanned_ + 1] == '\n';
        if ((c == '\n' || c == '\r') && !isPair) {
            ++line_;
            lineStart_ = scanned_ + 1;
        }
    }
    return {line_, offset - lineStart_ + 1};
}

}  // namespace kel::script
