// Late-bound calls on the doubles of the link; dispatch.txt tells how they are written.
#include <deque>
#include <map>
#include <sstream>

#include "com/variant.h"
#include "tests/support/table.h"
#include "tests/wine/support/fake_link.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

using com::Variant;

const std::map<std::string, WORD> kFlags = {
    {"get", DISPATCH_PROPERTYGET},
    {"call", DISPATCH_METHOD},
    {"get+call", DISPATCH_PROPERTYGET | DISPATCH_METHOD},
    {"put", DISPATCH_PROPERTYPUT},
    {"putref", DISPATCH_PROPERTYPUTREF},
    {"put+putref", DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF}};

const std::map<std::string, VARTYPE> kTypes = {
    {"i2", VT_I2},     {"i4", VT_I4},       {"i8", VT_I8},         {"ui1", VT_UI1},
    {"ui4", VT_UI4},   {"r8", VT_R8},       {"bool", VT_BOOL},     {"bstr", VT_BSTR},
    {"null", VT_NULL}, {"empty", VT_EMPTY}, {"missing", VT_ERROR}, {"nothing", VT_DISPATCH}};

// What arguments are, as they are passed.
struct Arguments {
    std::vector<std::wstring> names;  // that of the member first
    std::vector<VARIANT> named, others;
    std::deque<VARIANT> values;  // that belong to the caller
    std::vector<VARIANT*> referred;
};

class LateBound : public testing::TestWithParam<Case> {
protected:
    IDispatch* objectOf(const std::string& name) const {
        if (name == "port") return link_.port();
        if (name == "link") return link_.communicator();
        return preprocessor_.Get();
    }

    VARIANT valueOf(const std::string& word) const {
        if (word == "port") return Variant(objectOf(word)).release();
        const std::size_t colon = word.find(':');
        VARIANT bare{};
        bare.vt = kTypes.at(word.substr(0, colon));
        if (bare.vt == VT_ERROR) bare.scode = DISP_E_PARAMNOTFOUND;
        if (colon == word.npos) return bare;
        return Variant(com::widen(word.substr(colon + 1))).convertedTo(bare.vt).release();
    }

    void add(Arguments& all, std::string word) const {
        const std::size_t equals = word.find('=');
        if (equals != word.npos) all.names.push_back(com::widen(word.substr(0, equals)));
        word.erase(0, equals + 1);
        const std::size_t references = word.find_first_not_of('&');
        VARIANT& value = all.values.emplace_back(valueOf(word.substr(references)));
        VARIANT passed = value;
        if (references > 0) {
            all.referred.push_back(&value);
            passed.vt = VT_BYREF | (references > 1 ? VARTYPE{VT_VARIANT} : value.vt);
            passed.byref = references > 1 ? &value : static_cast<void*>(&value.llVal);
        }
        std::vector<VARIANT>& place = equals == word.npos ? all.others : all.named;
        place.insert(equals == word.npos ? place.begin() : place.end(), passed);
    }

    static Outcome call(IDispatch* object, WORD flags, Arguments& all) {
        std::vector<LPOLESTR> names;
        for (std::wstring& name : all.names)
            names.push_back(name.data());
        std::vector<DISPID> members(names.size());
        Outcome outcome;
        if (std::iswdigit(all.names[0][0])) {
            members[0] = std::stoi(all.names[0]);
        } else {
            outcome.code = object->GetIDsOfNames(
                IID_NULL, names.data(), static_cast<UINT>(names.size()), 0, members.data());
        }
        if (FAILED(outcome.code)) return outcome;
        all.named.insert(all.named.end(), all.others.begin(), all.others.end());
        outcome =
            invoke(object, members[0], flags, all.named, {members.begin() + 1, members.end()});
        EXPECT_FALSE(takeError()) << "an error is left behind";
        return outcome;
    }

    static std::string showPlace(const VARIANT& place) {
        if (place.vt == VT_NULL) return "null";
        return place.vt == VT_DISPATCH ? "an object" : show(Variant(place));
    }

    // What is told of a call.
    std::string play(std::string line) {
        IDispatch* const object = objectOf(takeWord(line));
        const WORD flags = kFlags.at(takeWord(line));
        Arguments all;
        all.names.push_back(com::widen(takeWord(line)));
        std::istringstream words(line);
        for (std::string word; words >> word;)
            add(all, word);
        std::string told = show(call(object, flags, all));
        if (!told.empty()) told += "\n";
        for (VARIANT* place : all.referred)
            told += "& " + showPlace(*place) + "\n";
        for (VARIANT& value : all.values)
            VariantClear(&value);
        return told + link_.takeWork();
    }

    FakeLink link_;
    const com::ComPtr<IPreprocessorControl> preprocessor_ =
        kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
};

TEST_P(LateBound, CallsDoWhatTheTableTells) {
    link_.reply = L"answer";
    for (const Step& step : GetParam().steps)
        if (!step.settings.empty()) link_.failCall(std::stol(step.settings[0]), E_ABORT);
    playTable(GetParam(), [&](const std::string& line) { return play(line); });
}

INSTANTIATE_TEST_SUITE_P(Dispatch, LateBound,
                         testing::ValuesIn(readCases("tests/wine/com/dispatch.txt")),
                         testing::PrintToStringParamName());

TEST_F(LateBound, RefusesWhatIsNoCall) {
    constexpr DISPID kSleep = 17;
    IDispatch* const port = link_.port();
    DISPPARAMS none{};
    com::ComPtr<ITypeInfo> type;
    const auto call = [&](const IID& iid, DISPPARAMS* arguments) {
        return port->Invoke(kSleep, iid, 0, DISPATCH_METHOD, arguments, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(call(IID_IUnknown, &none), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(call(IID_NULL, nullptr), E_INVALIDARG);
    EXPECT_EQ(call(IID_NULL, &none), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(port->GetTypeInfo(1, 0, &type), DISP_E_BADINDEX);
    EXPECT_EQ(port->GetTypeInfo(0, 0, nullptr), E_POINTER);
    EXPECT_EQ(port->GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(link_.takeWork(), "");
    EXPECT_FALSE(takeError());
}

}  // namespace
}  // namespace kel::test
