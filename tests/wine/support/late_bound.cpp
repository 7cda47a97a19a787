#include "tests/wine/support/late_bound.h"

#include <deque>
#include <regex>
#include <vector>

#include "com/error.h"
#include "com/text.h"
#include "tests/support/cases.h"

namespace kel::test {
namespace {

std::string showFailure(HRESULT code, const BSTR reason) {
    const std::pair<HRESULT, const char*> names[] = {
        {E_FAIL, "E_FAIL"}, {E_INVALIDARG, "E_INVALIDARG"}, {DISP_E_BADINDEX, "DISP_E_BADINDEX"}};
    for (const auto& [known, name] : names)
        if (code == known) return name + (" " + com::narrow(com::view(reason)));
    return std::to_string(code);
}

com::Variant argument(const std::string& word) {
    if (word[0] == '"') return com::Variant(std::string_view(word).substr(1, word.size() - 2));
    com::Variant value;
    VARIANT* place = value.put();
    place->vt = word == "none" ? VT_BSTR : VT_BOOL;
    if (word == "yes") place->boolVal = 1;
    if (word == "true") place->boolVal = VARIANT_TRUE;
    if (std::isalpha(word[0])) return value;
    return com::Variant(std::stol(word));
}

}  // namespace

std::string show(const com::Variant& value) {
    if (value.type() == VT_BSTR) return "\"" + escaped(value.toText()) + "\"";
    return value.type() == VT_EMPTY ? "" : value.toText();
}

std::string call(IDispatch* object, const std::string& line) {
    const std::regex pattern("\"[^\"]*\"|\\S+");
    std::vector<std::string> words;
    for (std::sregex_iterator word(line.begin(), line.end(), pattern), end; word != end; ++word)
        words.push_back(word->str());
    std::wstring name = com::widen(words[0]);
    LPOLESTR names = name.data();
    DISPID member = 0;
    com::check(object->GetIDsOfNames(IID_NULL, &names, 1, 0, &member));
    const bool isPut = std::erase(words, "=") > 0;

    std::deque<com::Variant> values, outs;
    std::vector<VARIANT> arguments;
    for (std::size_t i = words.size(); --i > 0;) {
        VARIANT place;
        place.vt = VT_BYREF | VT_VARIANT;
        if (words[i] == "out") place.pvarVal = outs.emplace_front().put();
        arguments.push_back(words[i] == "out" ? place
                                              : values.emplace_back(argument(words[i])).get());
    }
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), isPut ? &put : nullptr,
                          static_cast<UINT>(arguments.size()), isPut ? 1u : 0u};
    EXCEPINFO failure{};
    com::Variant result;
    const HRESULT code = object->Invoke(
        member, IID_NULL, 0,
        static_cast<WORD>(isPut ? DISPATCH_PROPERTYPUT : DISPATCH_METHOD | DISPATCH_PROPERTYGET),
        &parameters, isPut ? nullptr : result.put(), &failure, nullptr);
    const com::Bstr reason(com::view(failure.bstrDescription));
    for (const BSTR text : {failure.bstrDescription, failure.bstrSource, failure.bstrHelpFile})
        SysFreeString(text);
    if (code != S_OK)
        return showFailure(code == DISP_E_EXCEPTION ? failure.scode : code, reason.get());
    std::string shown = show(result);
    for (const com::Variant& out : outs)
        shown += " " + show(out);
    return shown;
}

}  // namespace kel::test
