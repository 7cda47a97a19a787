#include "hosts/conformance/call_line.h"

#include <regex>
#include <vector>

#include "com/text.h"
#include "hosts/conformance/model/cases.h"

namespace kel::conformance {
namespace {

com::Variant argument(const std::string& word) {
    if (word[0] == '"') {
        const auto text = std::string_view(word).substr(1, word.size() - 2);
        return com::Variant(com::widen(text, CP_UTF8));
    }
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

Outcome invoke(IDispatch* object, DISPID member, WORD flags, std::vector<VARIANT> arguments,
               std::vector<DISPID> named) {
    const bool isPut = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
    if (isPut) named.insert(named.begin(), DISPID_PROPERTYPUT);
    DISPPARAMS parameters{arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                          static_cast<UINT>(named.size())};
    Outcome outcome;
    outcome.member = member;
    EXCEPINFO failure{};
    SetErrorInfo(0, nullptr);
    SetLastError(ERROR_SUCCESS);
    outcome.code = object->Invoke(member, IID_NULL, 0, flags, &parameters,
                                  isPut ? nullptr : outcome.result.put(), &failure, nullptr);
    outcome.lastError = GetLastError();
    outcome.reason = com::narrow(failure.bstrDescription);
    outcome.source = com::narrow(failure.bstrSource);
    for (const BSTR text : {failure.bstrDescription, failure.bstrSource, failure.bstrHelpFile})
        SysFreeString(text);
    if (outcome.code == DISP_E_EXCEPTION) outcome.code = failure.scode;
    return outcome;
}

Outcome invoke(IDispatch* object, const std::string& line,
               const std::map<std::string, com::Variant>& values) {
    const std::size_t stop = line.find_first_of(". \"");
    if (stop != line.npos && line[stop] == '.') {
        Outcome member = invoke(object, line.substr(0, stop), values);
        const VARIANT& found = member.result.get();
        if (found.vt != VT_DISPATCH || !found.pdispVal) return member;
        return invoke(found.pdispVal, line.substr(stop + 1), values);
    }
    const std::regex pattern("\"[^\"]*\"|\\S+");
    std::vector<std::string> words;
    for (std::sregex_iterator word(line.begin(), line.end(), pattern), end; word != end; ++word)
        words.push_back(word->str());
    std::wstring name = com::widen(words[0]);
    LPOLESTR names = name.data();
    DISPID member = 0;
    Outcome outcome;
    outcome.code = object->GetIDsOfNames(IID_NULL, &names, 1, 0, &member);
    if (FAILED(outcome.code)) return outcome;
    const bool isPut = std::erase(words, "=") > 0;

    std::deque<com::Variant> outs, held;
    std::vector<VARIANT> arguments;
    for (std::size_t i = words.size(); --i > 0;) {
        const auto known = values.find(words[i]);
        VARIANT place;
        place.vt = VT_BYREF | VT_VARIANT;
        if (words[i] == "out") {
            place.pvarVal = outs.emplace_front().put();
        } else {
            place =
                held.emplace_back(known == values.end() ? argument(words[i]) : known->second).get();
        }
        arguments.push_back(place);
    }
    const int flags = isPut ? DISPATCH_PROPERTYPUT : DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    outcome = invoke(object, member, static_cast<WORD>(flags), std::move(arguments));
    outcome.outs = std::move(outs);
    return outcome;
}

}  // namespace kel::conformance
