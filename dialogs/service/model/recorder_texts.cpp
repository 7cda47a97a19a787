#include "dialogs/service/model/recorder_texts.h"

#include <algorithm>

namespace kel::service {
namespace {

std::wstring digits(std::uint32_t number, std::size_t least = 2) {
    const std::wstring text = std::to_wstring(number);
    return std::wstring(least - std::min(least, text.size()), L'0') + text;
}

std::wstring clock(std::uint32_t seconds) {
    return digits(seconds / 3600) + L":" + digits(seconds % 3600 / 60) + L":" +
           digits(seconds % 60);
}

constexpr std::uint32_t kWorthTelling = 2000;  // milliseconds

std::uint32_t unsignedOf(int number) {
    return static_cast<std::uint32_t>(number);
}

}  // namespace

std::wstring nameOf(Operation operation) {
    return operation == Operation::Format ? L"Format" : L"Download";
}

std::wstring cancelQuestion(Operation operation) {
    return nameOf(operation) + L" in progress\nAre you sure that you want to cancel it?";
}

std::wstring cancelCaption(Operation operation) {
    return L"Cancel " + nameOf(operation) + L" ?";
}

std::wstring remainingTimeText(std::uint32_t elapsed, std::uint32_t done, std::uint32_t total) {
    const std::uint32_t estimated = elapsed * total / std::max(done, std::uint32_t{1});
    const std::uint32_t remaining = estimated < elapsed ? 0 : estimated - elapsed;
    return L"Remaining time : " + clock(remaining / 1000);
}

std::wstring doneText(std::uint32_t elapsed) {
    return L"Done : " + clock(elapsed / 1000);
}

std::wstring listingText(std::uint32_t elapsed, std::uint32_t listed, std::uint32_t total) {
    if (elapsed < kWorthTelling) return {};
    if (total == 0) return L"Reading the list of files, " + clock(elapsed / 1000) + L" so far";
    std::wstring text =
        std::to_wstring(listed) + L" of " + std::to_wstring(total) + L" files listed";
    if (listed == 0) return text;
    const auto left = std::uint64_t{elapsed} * (total - listed) / listed;
    return text + L", " + clock(static_cast<std::uint32_t>(left / 1000)) + L" remaining";
}

std::wstring fileDateText(int year, int month, int day) {
    return digits(unsignedOf(month)) + L"/" + digits(unsignedOf(day)) + L"/" +
           digits(unsignedOf(year), 4);
}

std::wstring fileTimeText(int hour, int minute) {
    return digits(unsignedOf(hour)) + L":" + digits(unsignedOf(minute));
}

std::wstring asFolder(std::wstring path) {
    if (!path.ends_with(L'\\')) path += L'\\';
    return path;
}

std::wstring replaceQuestion(const std::wstring& fileName) {
    return L"File '" + fileName + L"' already exists!\nDo you want to replace it?";
}

}  // namespace kel::service
