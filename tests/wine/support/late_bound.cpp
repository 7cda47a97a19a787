#include "tests/wine/support/late_bound.h"

#include "com/error.h"

namespace kel::test {
namespace {

std::string showFailure(const Outcome& outcome) {
    const std::pair<HRESULT, const char*> names[] = {{E_FAIL, "E_FAIL"},
                                                     {E_POINTER, "E_POINTER"},
                                                     {E_ACCESSDENIED, "E_ACCESSDENIED"},
                                                     {E_INVALIDARG, "E_INVALIDARG"},
                                                     {DISP_E_BADINDEX, "DISP_E_BADINDEX"}};
    for (const auto& [known, name] : names)
        if (outcome.code == known) return name + (" " + outcome.reason);
    return std::to_string(outcome.code) + (outcome.reason.empty() ? "" : " " + outcome.reason);
}

// Numbers and times are written in no user's way.
std::string showResult(const com::Variant& value) {
    if (value.type() != VT_R8 && value.type() != VT_DATE) return show(value);
    com::Variant text;
    VARIANT held = value.get();
    com::check(VariantChangeTypeEx(text.put(), &held, LOCALE_INVARIANT, 0, VT_BSTR));
    return text.toText();
}

}  // namespace

std::string show(const Outcome& outcome) {
    if (outcome.code != S_OK) return showFailure(outcome);
    const VARIANT& value = outcome.result.get();
    // No truth value of the platform, though it would show as one.
    if (value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE && value.boolVal != VARIANT_TRUE)
        return "a truth value of " + std::to_string(value.boolVal);
    std::string shown = showResult(outcome.result);
    for (const com::Variant& out : outcome.outs)
        shown += " " + showResult(out);
    return shown;
}

std::string call(IDispatch* object, const std::string& line) {
    const Outcome outcome = invoke(object, line);
    if (outcome.code == DISP_E_UNKNOWNNAME) throw com::Error(outcome.code);
    return show(outcome);
}

}  // namespace kel::test
