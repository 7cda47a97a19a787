#include "bench/link/access/pressure_access.h"

#include "bench/link/access/dialogue.h"
#include "bench/link/model/answers.h"

namespace kel::bench {

HRESULT PressureAccess::StartCollection(VARIANT_BOOL* result) {
    return dialogue(result, [&] {
        samples_.stop();
        isNew_ = false;
        current_ = 0;
        sum_ = 0;
        number_ = 0;
        offset_ = askOffset();
        return samples_.start(link().Get(), "pressure collect");
    });
}

HRESULT PressureAccess::StopCollection(VARIANT_BOOL* result) {
    return dialogue(result, [&] {
        if (!samples_.isRunning()) return true;
        samples_.stop();
        count();
        return true;
    });
}

HRESULT PressureAccess::get_NewData(VARIANT_BOOL* newData) {
    return operation([&] {
        com::out(newData) = VARIANT_FALSE;
        if (!isTalking()) count();
        *newData = com::variantBool(std::exchange(isNew_, false));
    });
}

HRESULT PressureAccess::get_CurrentPressure(double* pressure) {
    return operation([&] { com::out(pressure) = current_; });
}

HRESULT PressureAccess::get_MeanPressure(double* pressure) {
    return operation([&] { com::out(pressure) = number_ == 0 ? 0 : sum_ / number_; });
}

HRESULT PressureAccess::get_Offset(double* offset) {
    return operation([&] {
        com::out(offset) = 0;
        if (!samples_.isRunning()) exclusively([&] { offset_ = askOffset(); });
        *offset = offset_;
    });
}

double PressureAccess::askOffset() {
    QuietPort port(link().Get(), home());
    const std::string answer = Dialogue(port).ask("pressoffset");
    constexpr std::string_view kName = "Pressure Offset: ";
    if (!answer.starts_with(kName)) throw NoAnswer(L"The instrument tells no pressure offset");
    const auto numbers = leadingNumbers(std::string_view(answer).substr(kName.size()), 1);
    if (!numbers) throw NoAnswer(L"The instrument tells no pressure offset");
    return numbers->front();
}

void PressureAccess::count() {
    for (const std::string& line : samples_.take()) {
        const auto pressure = leadingNumbers(line, 1);
        if (!pressure) continue;
        current_ = pressure->front();
        sum_ += current_;
        ++number_;
        isNew_ = true;
    }
}

}  // namespace kel::bench
