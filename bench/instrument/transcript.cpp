#include "bench/instrument/transcript.h"

#include "bench/instrument/system_error.h"
#include "bench/instrument/text.h"

namespace kel::bench {

namespace {

std::string escaped(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\r') {
            text += "\\r";
        } else if (character == '\n') {
            text += "\\n";
        } else if (character == '\\') {
            text += "\\\\";
        } else if (byte < ' ' || byte > '~') {
            text += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
        } else {
            text += character;
        }
    }
    return text;
}

}  // namespace

Transcript::Transcript(const std::string& fileName) {
    if (fileName.empty()) return;
    file_.open(fileName, std::ios::trunc);
    if (!file_) throwSystemError(fileName);
    file_.exceptions(std::ios::badbit | std::ios::failbit);
}

void Transcript::write(Duration now, std::string_view mark, std::string_view bytes) {
    if (!file_.is_open() || bytes.empty()) return;
    const double seconds = std::chrono::duration<double>(now).count();
    file_ << formatNumber(seconds, 3) << ' ' << mark << escaped(bytes) << std::endl;
}

}  // namespace kel::bench
