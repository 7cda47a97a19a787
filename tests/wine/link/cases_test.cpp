// Plays the cases of cases.txt: late-bound calls, as script languages make them, and the peer's
// part.
#include <deque>
#include <optional>
#include <regex>
#include <sstream>

#include "com/variant.h"
#include "tests/support/cases.h"
#include "tests/wine/link/connected_stream.h"

namespace kel::bench::test {
namespace {

using kel::test::Case;
using kel::test::Step;

std::string show(const com::Variant& value) {
    if (value.type() == VT_BSTR) return "\"" + kel::test::escaped(value.toText()) + "\"";
    return value.type() == VT_EMPTY ? "" : value.toText();
}

std::string show(HRESULT code, const BSTR reason) {
    const std::pair<HRESULT, const char*> names[] = {
        {E_FAIL, "E_FAIL"}, {E_INVALIDARG, "E_INVALIDARG"}, {DISP_E_BADINDEX, "DISP_E_BADINDEX"}};
    for (const auto& [known, name] : names)
        if (code == known) return name + (" " + com::narrow(com::view(reason)));
    return std::to_string(code);
}

// A text in quotes, a number, a boolean ("yes" is 1, which is not VARIANT_TRUE), or "none".
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

// Calls a member: "Name argument ..." or "Name = value"; "out" takes a result. Gives the results.
std::string call(IDispatch* object, const std::string& line) {
    const std::regex pattern("\"[^\"]*\"|\\S+");
    std::vector<std::string> words;
    for (std::sregex_iterator word(line.begin(), line.end(), pattern), end; word != end; ++word)
        words.push_back(word->str());
    std::wstring name = com::widen(words[0]);
    LPOLESTR names = name.data();
    DISPID member = 0;
    com::check(object->GetIDsOfNames(IID_NULL, &names, 1, 0, &member));
    const bool isPut = words.size() > 1 && words[1] == "=";

    std::deque<com::Variant> values, outs;
    std::vector<VARIANT> arguments;
    for (std::size_t i = words.size(); --i > (isPut ? 1 : 0);) {
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
    const Bstr reason(com::view(failure.bstrDescription));
    for (const BSTR text : {failure.bstrDescription, failure.bstrSource, failure.bstrHelpFile})
        SysFreeString(text);
    if (code != S_OK) return show(code == DISP_E_EXCEPTION ? failure.scode : code, reason.get());
    std::string shown = show(result);
    for (const com::Variant& out : outs)
        shown += " " + show(out);
    return shown;
}

class LinkCase : public ConnectedStreamTest, public testing::WithParamInterface<Case> {
protected:
    void SetUp() override {}
    void TearDown() override {
        object_.Reset();
        ConnectedStreamTest::TearDown();
    }

    // The object of a case, after "on"; an instrument in a state may stand behind it, whose time
    // runs so many times faster.
    void make(const std::string& setting) {
        std::istringstream words(setting);
        std::string kind, state;
        double timeScale = 1;
        words >> kind >> kind >> state >> timeScale;
        const TimeScale scale(std::to_wstring(timeScale).c_str());
        if (kind == "serial") object_ = create<IDispatch>(link::kSerialStreamClass);
        if (kind == "collection") object_ = create<IDispatch>(link::kCollectionClass);
        if (kind == "communicator") object_ = create<IDispatch>(kCommunicatorClass);
        if (object_ && state.empty()) return;

        InstrumentOptions options;
        options.asleep = state == "asleep";
        options.silent = state == "silent";
        if (state != "peer") instrument_.emplace(options, timeScale);
        stream = create<INetworkStream>(link::kNetworkStreamClass);
        ASSERT_TRUE(connectTo(*stream.Get(), instrument_ ? instrument_->port() : peer.port()));
        if (!instrument_) peer.accept();
        stream->put_EchoWindow(window_.number());
        if (!object_) com::check(stream.As(&object_));
        ComPtr<IKelCommunicator> communicator;
        if (SUCCEEDED(object_.As(&communicator))) communicator->put_Port(stream.Get());
    }

    // Does a line and gives what it shows.
    std::string play(const std::string& line) {
        const std::string word = line.substr(0, line.find(' '));
        const std::string rest = line.substr(std::min(word.size() + 1, line.size()));
        if (word == "arrive") return arrive(rest), "";
        if (word == "say") return peer.send(rest), "";
        if (word == "vanish") return peer.vanish(), "";
        if (word == "hear") return show(com::Variant(peer.receive(std::stoul(rest))));
        if (word == "shown") return show(com::Variant(window_.shown()));
        if (word == "quiet") return call(object_.Get(), rest), "";
        if (word == "closed") {
            while (isOpen())
                stream->Sleep(1);
            return "";
        }
        if (word == "repeat") {
            for (const auto size = window_.shown().size() + 8; window_.shown().size() < size;)
                call(object_.Get(), rest);
            return "";
        }
        return call(object_.Get(), line);
    }

    TestWindow window_;
    std::optional<InstrumentServer> instrument_;
    ComPtr<IDispatch> object_;
};

TEST_P(LinkCase, ShowsWhatIsExpected) {
    const auto& steps = GetParam().steps;
    make(steps[0].settings.empty() ? "on stream peer" : steps[0].settings[0]);
    for (const Step& step : steps) {
        std::string shown;
        for (const std::string& line : step.lines) {
            const std::string results = play(line);
            if (!results.empty()) shown += results + "\n";
        }
        EXPECT_EQ(shown, step.expected) << "line " << step.line;
    }
}

INSTANTIATE_TEST_SUITE_P(Link, LinkCase, testing::ValuesIn(kel::test::readCases(KEL_LINK_CASES)),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::bench::test
