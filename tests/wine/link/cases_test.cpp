// Plays the cases of cases.txt: late-bound calls, as script languages make them, and the peer's
// part.
#include <optional>
#include <sstream>

#include "tests/support/cases.h"
#include "tests/wine/link/connected_stream.h"
#include "tests/wine/support/late_bound.h"

namespace kel::bench::test {
namespace {

using kel::test::call;
using kel::test::Case;
using kel::test::show;
using kel::test::Step;

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
        if (word == "error") return std::to_string(GetLastError());
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

INSTANTIATE_TEST_SUITE_P(Link, LinkCase,
                         testing::ValuesIn(kel::test::readCases("tests/wine/link/cases.txt")),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace kel::bench::test
