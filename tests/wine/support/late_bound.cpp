#include "tests/wine/support/late_bound.h"

#include <map>

#include "com/error.h"

namespace kel::test {
namespace {

std::string showFailure(const Outcome& outcome) {
    static const std::map<HRESULT, const char*> names = {
        {E_ABORT, "E_ABORT"},
        {E_ACCESSDENIED, "E_ACCESSDENIED"},
        {E_FAIL, "E_FAIL"},
        {E_INVALIDARG, "E_INVALIDARG"},
        {E_POINTER, "E_POINTER"},
        {DISP_E_BADINDEX, "DISP_E_BADINDEX"},
        {DISP_E_BADPARAMCOUNT, "DISP_E_BADPARAMCOUNT"},
        {DISP_E_MEMBERNOTFOUND, "DISP_E_MEMBERNOTFOUND"},
        {DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH"},
        {DISP_E_UNKNOWNNAME, "DISP_E_UNKNOWNNAME"}};
    const auto known = names.find(outcome.code);
    return (known == names.end() ? std::to_string(outcome.code) : known->second) +
           (outcome.reason.empty() ? "" : " " + outcome.reason);
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
