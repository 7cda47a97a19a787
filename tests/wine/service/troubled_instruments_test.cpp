// Whatever waits for an instrument, on instruments that are silent, slow, garble or vanish; what
// the user may be told then stands in troubles.txt.
#include <cstdlib>
#include <sstream>

#include "tests/support/cases.h"
#include "tests/wine/service/bench_services.h"
#include "tests/wine/service/live_terminal.h"
#include "tests/wine/support/resource_counts.h"
#include "tests/wine/support/user.h"

namespace kel::test {
namespace {

using bench::InstrumentOptions;
using std::chrono::milliseconds;

constexpr int kMostCommands = 60;

const struct {
    const char* name;
    void (*set)(InstrumentOptions& options, int commands);
} kMoods[] = {
    {"silent", [](InstrumentOptions& options, int) { options.silent = true; }},
    {"late", [](InstrumentOptions& options, int) { options.slow = std::chrono::hours(1); }},
    {"slow", [](InstrumentOptions& options, int) { options.slow = milliseconds(1500); }},
    {"noisy", [](InstrumentOptions& options, int) { options.garbleRate = 0.01; }},
    {"garbling", [](InstrumentOptions& options, int) { options.garbleRate = 0.3; }},
    {"vanishing", [](InstrumentOptions& options, int after) { options.vanishAfter = after; }},
};

// What connects: through a gateway in the same mood.
const std::vector<UserStep> kToConnect = {{IDOK}, {0, IDC_NETWORK_STATUS, L"the end"}};
const Service kConnections[] = {
    {"ConnectKelGateDialog", &CLSID_ConnectKelGateDialog, L"Connect", IDC_NETWORK_STATUS,
     kToConnect},
    {"NewSessionDialog", &CLSID_NewSessionDialog, L"Open Session", IDC_NETWORK_STATUS, kToConnect},
};

class TroubledInstruments : public BenchServices, public testing::WithParamInterface<Case> {
protected:
    // Does its work on the present link; true when that is done. Its component stays the same.
    using Operation = std::function<bool()>;

    Operation operation(const std::string& text) {
        if (text.starts_with("script ")) return script(com::widen(text.substr(7)));
        if (text == "terminal") return [this] { return beTyped(); };
        const Service* service = std::ranges::find(kConnections, text, &Service::name);
        needsGateway_ = service != std::end(kConnections);
        if (!needsGateway_) service = std::ranges::find(kServices, text, &Service::name);
        const auto dialog = kelUtils().create<IKelModalDialog>(*service->component);
        return [this, service, dialog] { return serve(*service, link.Get(), dialog); };
    }

    Operation script(const std::wstring& text) {
        const auto preprocessor = kelUtils().create<IPreprocessorControl>(CLSID_Preprocessor);
        preprocessor->put_ScriptPath(com::Bstr(folder_.path()).get());
        return [this, preprocessor, text] {
            told_.clear();
            const std::wstring inner = folder_.file(L"inner.kel", "ver\r\n#WAIT_PROMPT 5\r\n");
            preprocessor->put_Communicator(link.Get());
            link->put_Preprocessor(preprocessor.Get());
            VARIANT_BOOL hasRun = VARIANT_FALSE;
            code_ = preprocessor->PreprocessAndRun(com::Bstr(text).get(), &hasRun);
            com::ComPtr<IScriptDiagnostics> all;
            long count = 0;
            preprocessor->get_Diagnostics(&all);
            all->get_Count(&count);
            for (long i = 0; i < count; ++i) {
                com::ComPtr<IScriptDiagnostic> each;
                com::Bstr message;
                all->get_Item(i, &each);
                each->get_Message(message.put());
                told_.insert(com::narrow(message.view()));
            }
            isTold_ = count > 0;
            link->put_Preprocessor(nullptr);
            preprocessor->put_Communicator(nullptr);
            DeleteFileW(inner.c_str());
            return hasRun == VARIANT_TRUE;
        };
    }

    // A command and its answer. That nothing comes is all that a terminal can tell.
    bool beTyped() {
        told_.clear();
        stream->put_IdleProcessing(VARIANT_TRUE);
        LiveTerminal terminal(link.Get());
        VARIANT_BOOL isSent = VARIANT_FALSE;
        code_ = stream->WriteString(com::Bstr(L"ver").get(), VARIANT_TRUE, 0, &isSent);
        const bool isAnswered = terminal.runUntilPrompt(milliseconds(300));
        gaveUp_ = true;
        stream->put_IdleProcessing(VARIANT_FALSE);
        // The terminal lets go of the port.
        stream->put_EchoWindow(window.number());
        return isAnswered;
    }

    // On an instrument in a mood from its so manieth command on; then, with the same component, on
    // a healthy one. False when the trouble came too late.
    bool expectSurvived(const std::string& mood, int commands, std::uint32_t seed,
                        const wchar_t* linkScale = L"50") {
        if (HasFailure()) return false;
        SCOPED_TRACE(mood + " after " + std::to_string(commands) + ", seed " +
                     std::to_string(seed));
        const Operation work = operation(GetParam().steps.front().text());
        InstrumentOptions options = instrument();
        options.troubleAfter = commands;
        options.seed = seed;
        std::ranges::find(kMoods, mood, [](auto& row) { return row.name; })->set(options, commands);
        setTrouble(options, linkScale);
        const std::size_t windows = countResources().windows;
        patience_ = milliseconds(300);
        const bool isDone = work();
        if (code_ != S_OK) told_.insert(com::narrow(takeError().value().description));
        EXPECT_TRUE(isDone || isTold_ || gaveUp_ || code_ != S_OK) << "nobody is told";
        for (const std::string& each : told_)
            EXPECT_TRUE(mayBeTold(each)) << escaped(each);
        EXPECT_TRUE(isRestored(stream.Get()));
        EXPECT_EQ(countResources().windows, windows);
        hasAllFiles();
        // Names of the listing are garbled too.
        for (const std::wstring& name : folder_.names())
            if (name != L"new.bin") DeleteFileW((folder_.path() + L"\\" + name).c_str());
        if (HasFailure()) return false;

        setTrouble(instrument(), L"2");
        patience_.reset();
        EXPECT_TRUE(work()) << "it does not recover";
        EXPECT_EQ(code_, S_OK) << (code_ == S_OK ? "" : com::narrow(takeError()->description));
        hasAllFiles();
        return !isDone || !told_.empty();
    }

    void setTrouble(const InstrumentOptions& options, const wchar_t* linkScale) {
        setUp(options, linkScale);
        gateway_.reset();
        if (!needsGateway_) return;
        gateway_.emplace(options, 50, true);
        const std::string list = "KelGateConnect\\Connections";
        remember(list + " Count = dword:1");
        remember(list + "\\0 Name = Gate");
        remember(list + "\\0 Address = gate:127.0.0.1");
        remember(list + "\\0", "Port", com::narrow(gateway_->port().view()));
    }

    // A line of what is expected, or its begin before "*".
    bool mayBeTold(const std::string& text) const {
        std::istringstream lines(GetParam().steps.front().expected);
        for (std::string line; std::getline(lines, line);)
            if (fits(text, unescaped(line))) return true;
        return false;
    }

    bool needsGateway_ = false;
    std::optional<bench::test::InstrumentServer> gateway_;
};

// A setting is a mood and the number of commands that are answered before; where somebody has the
// time there are all moods, all numbers, and some seeds.
TEST_P(TroubledInstruments, AreSurvived) {
    const auto expectSettingsSurvived = [&](const wchar_t* linkScale) {
        for (std::string setting : GetParam().steps.front().settings) {
            const std::string mood = takeWord(setting);
            expectSurvived(mood, std::stoi(setting), 1, linkScale);
        }
    };
    if (!std::getenv("KEL_EVERY_TROUBLE")) {
        expectSettingsSurvived(L"50");
    } else {
        // In the link's own time, for the figure.
        expectSettingsSurvived(L"1");
        const std::chrono::duration<double> longest = leaving_;
        if (longest.count() > 0)
            std::printf("cancel: %s after %.2f s at most\n",
                        GetParam().steps.front().text().c_str(), longest.count());
        int last = 0;
        while (expectSurvived("silent", last, 1) && last < kMostCommands)
            ++last;
        for (const auto& mood : kMoods)
            for (int commands = 0; commands <= last; ++commands)
                for (std::uint32_t seed = 1; seed <= (mood.name[0] == 'g' ? 3 : 1); ++seed)
                    expectSurvived(mood.name, commands, seed);
    }
    expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Operations, TroubledInstruments,
                         testing::ValuesIn(readCases("tests/wine/service/troubles.txt")));

}  // namespace
}  // namespace kel::test
