#include "tests/wine/support/late_bound.h"

#include "com/error.h"

namespace kel::test {
namespace {

std::string showFailure(const Outcome& outcome) {
    const std::pair<HRESULT, const char*> names[] = {
        {E_FAIL, "E_FAIL"}, {E_INVALIDARG, "E_INVALIDARG"}, {DISP_E_BADINDEX, "DISP_E_BADINDEX"}};
    for (const auto& [known, name] : names)
        if (outcome.code == known) return name + (" " + outcome.reason);
    return std::to_string(outcome.code);
}

}  // namespace

std::string call(IDispatch* object, const std::string& line) {
    const Outcome outcome = invoke(object, line);
    if (outcome.code == DISP_E_UNKNOWNNAME) throw com::Error(outcome.code);
    if (outcome.code != S_OK) return showFailure(outcome);
    std::string shown = show(outcome.result);
    for (const com::Variant& out : outcome.outs)
        shown += " " + show(out);
    return shown;
}

}  // namespace kel::test
