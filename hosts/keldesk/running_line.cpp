#include "hosts/keldesk/running_line.h"

#include <cwchar>

#include "com/text.h"
#include "com/variant.h"

namespace kel::keldesk {
namespace {

std::optional<Wait> waitOf(const std::wstring& directive,
                           const com::ComPtr<IFlatCollection>& parameters) {
    const bool isPlain = com::sameName(directive, L"WAIT");
    if (!isPlain && !com::sameName(directive, L"WAIT_OK") &&
        !com::sameName(directive, L"WAIT_PROMPT")) {
        return std::nullopt;
    }
    long count = 0;
    com::check(parameters->get_Count(&count), parameters);
    if (count == 0) return std::nullopt;
    com::Variant seconds;
    com::check(parameters->get_Item(com::Variant(0L).get(), seconds.put()), parameters);
    const com::Variant text = seconds.convertedTo(VT_BSTR);
    return Wait{std::wcstol(std::wstring(com::view(text.get().bstrVal)).c_str(), nullptr, 10),
                !isPlain};
}

}  // namespace

void RunningLine::begin(const std::wstring& script, std::size_t line) {
    script_ = script;
    line_ = line;
    start_ = std::chrono::steady_clock::now();
    wait_.reset();
}

void RunningLine::waitFor(const std::wstring& directive,
                          const com::ComPtr<IFlatCollection>& parameters) {
    wait_ = waitOf(directive, parameters);
}

std::wstring RunningLine::status() const {
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_);
    return lineStatus(script_, line_, static_cast<long>(elapsed.count()), wait_);
}

}  // namespace kel::keldesk
