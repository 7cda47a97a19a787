#include "hosts/shared/running_line.h"

#include <algorithm>
#include <cwchar>

#include "com/text.h"
#include "com/variant.h"

namespace kel::host {
namespace {

struct WaitingWord {
    const wchar_t* directive;
    const wchar_t* what;
    bool endsEarlier;
};

constexpr WaitingWord kWaitingWords[] = {{L"WAIT", L"waiting", false},
                                         {L"WAIT_OK", L"waiting for OK", true},
                                         {L"WAIT_PROMPT", L"waiting for a prompt", true},
                                         {L"WAKEUP", L"waking the instrument", true}};

// The first parameter of a directive as a number; 0 where there is none.
long secondsOf(const com::ComPtr<IFlatCollection>& parameters) {
    long count = 0;
    com::check(parameters->get_Count(&count), parameters);
    if (count == 0) return 0;
    com::Variant seconds;
    com::check(parameters->get_Item(com::Variant(0L).get(), seconds.put()), parameters);
    const com::Variant text = seconds.convertedTo(VT_BSTR);
    return std::wcstol(std::wstring(com::view(text.get().bstrVal)).c_str(), nullptr, 10);
}

std::optional<Wait> waitOf(const EventArguments& arguments) {
    const std::wstring directive = arguments.text(0);
    const auto* const word = std::ranges::find_if(kWaitingWords, [&](const WaitingWord& one) {
        return com::sameName(directive, one.directive);
    });
    if (word == std::end(kWaitingWords)) return std::nullopt;
    return Wait{word->what, secondsOf(arguments.collection(1)), word->endsEarlier};
}

}  // namespace

bool RunningLine::follow(ScriptEvent event, const EventArguments& arguments) {
    if (event == kLineStarted) {
        script_ = arguments.text(0);
        line_ = arguments.number(1);
        start_ = std::chrono::steady_clock::now();
        wait_.reset();
    } else if (event == kDirectiveStarted) {
        wait_ = waitOf(arguments);
    } else {
        return false;
    }
    return true;
}

std::chrono::seconds RunningLine::elapsed() const {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() -
                                                            start_);
}

}  // namespace kel::host
