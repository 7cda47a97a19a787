#include "bench/link/model/file_name.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

namespace kel::bench {
namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::string_view kForbidden = "<>:\"/\\|?*\x7F";
constexpr std::string_view kDevices[] = {"CON", "PRN", "AUX", "NUL", "CLOCK$", "CONIN$", "CONOUT$"};
// The last three are digits that stand above the line.
constexpr std::string_view kPortDigits = "0123456789\xB9\xB2\xB3";

bool isDevice(std::string_view name) {
    std::string base(name.substr(0, name.find('.')));
    base.resize(base.find_last_not_of(' ') + 1);
    for (char& character : base) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 32);
    }
    const bool isPort = base.size() == 4 && (base.starts_with("COM") || base.starts_with("LPT")) &&
                        kPortDigits.find(base[3]) != kPortDigits.npos;
    return isPort ||
           std::find(std::begin(kDevices), std::end(kDevices), base) != std::end(kDevices);
}

}  // namespace

bool isFileName(std::string_view name) {
    if (name.empty() || name.size() > kLongestName) return false;
    if (name.ends_with('.') || name.ends_with(' ')) return false;
    const bool isClean = std::none_of(name.begin(), name.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ' ||
               kForbidden.find(character) != kForbidden.npos;
    });
    return isClean && !isDevice(name);
}

}  // namespace kel::bench
