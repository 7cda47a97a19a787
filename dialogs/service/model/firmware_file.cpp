#include "dialogs/service/model/firmware_file.h"

#include <algorithm>
#include <limits>

namespace kel::service {
namespace {

constexpr std::wstring_view kPathSeparators = L"\\/";
constexpr std::wstring_view kCodeBlanks = L" \t";
constexpr std::wstring_view kPackageExtension = L"KFH";
constexpr std::wstring_view kCompanionExtension = L"kfc";

// Without its dot; empty where there is none.
std::wstring_view extensionOfFirmware(std::wstring_view path) {
    const std::wstring_view name = firmwareName(path);
    const std::size_t dot = name.rfind(L'.');
    return dot == std::wstring_view::npos ? std::wstring_view() : name.substr(dot + 1);
}

wchar_t capitalOfAscii(wchar_t letter) {
    return letter >= L'a' && letter <= L'z' ? static_cast<wchar_t>(letter - L'a' + L'A') : letter;
}

}  // namespace

bool isFirmwarePackage(std::wstring_view path) {
    return std::ranges::equal(extensionOfFirmware(path), kPackageExtension, {}, capitalOfAscii);
}

std::wstring firmwareCompanion(std::wstring_view path) {
    const std::wstring_view extension = extensionOfFirmware(path);
    if (extension.empty() || isFirmwarePackage(path)) return {};
    return std::wstring(path.substr(0, path.size() - extension.size())).append(kCompanionExtension);
}

std::wstring_view firmwareName(std::wstring_view path) {
    const std::size_t separator = path.find_last_of(kPathSeparators);
    return separator == std::wstring_view::npos ? path : path.substr(separator + 1);
}

std::optional<std::int32_t> parseAccessCode(std::wstring_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::size_t begin = text.find_first_not_of(kCodeBlanks);
    if (begin == std::wstring_view::npos) return 0;
    text = text.substr(begin, text.find_last_not_of(kCodeBlanks) - begin + 1);
    const bool isNegative = text.front() == L'-';
    if (isNegative || text.front() == L'+') text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::int64_t number = 0;
    for (const wchar_t digit : text) {
        if (digit < L'0' || digit > L'9') return std::nullopt;
        number = number * 10 + (isNegative ? L'0' - digit : digit - L'0');
        if (number < Limits::min() || number > Limits::max()) return std::nullopt;
    }
    return static_cast<std::int32_t>(number);
}

}  // namespace kel::service
