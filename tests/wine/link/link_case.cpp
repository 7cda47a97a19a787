#include "tests/wine/link/link_case.h"

#include <algorithm>
#include <sstream>
#include <thread>

#include "bench/checksum.h"
#include "com/message_loop.h"
#include "tests/support/table.h"
#include "tests/wine/support/refusals.h"

namespace kel::bench::test {
namespace {

using kel::test::escaped;
using kel::test::takeWord;

std::string inQuotes(const std::string& text) {
    return "\"" + escaped(text) + "\"";
}

std::string lastLine(const std::string& text) {
    return text.substr(text.rfind('\n', text.size() - 2) + 1);
}

// "slow 100 card many": the instrument's options.
InstrumentOptions instrumentOf(const std::string& setting) {
    InstrumentOptions options;
    std::istringstream words(setting);
    long slow = 0;
    for (std::string word, kind; words >> word;) {
        if (word == "asleep") options.asleep = true;
        if (word == "silent") options.silent = true;
        if (word == "card" && words >> kind) options.card = cardKind(kind).value();
        if (word == "code") words >> options.accessCode;
        if (word == "badcell") words >> options.badCell.emplace();
        if (word == "garble") words >> options.garbleRate;
        if (word == "seed") words >> options.seed;
        if (word == "slow" && words >> slow) options.slow = std::chrono::milliseconds(slow);
    }
    return options;
}

// An object on its way to another thread.
class Passed {
public:
    explicit Passed(IDispatch* object) : object_(object) {
        com::check(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object, &stream_));
    }
    // There; it has to be the object itself.
    ComPtr<IDispatch> arrive() const {
        ComPtr<IDispatch> there;
        EXPECT_EQ(CoGetInterfaceAndReleaseStream(stream_, IID_PPV_ARGS(&there)), S_OK);
        EXPECT_EQ(there.Get(), object_) << "called there directly";
        return there;
    }

private:
    IDispatch* object_;
    IStream* stream_ = nullptr;
};

}  // namespace

void replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
}

std::pair<std::string, std::string> halves(const std::string& text) {
    const std::size_t bar = text.find(" | ");
    return {text.substr(0, bar), text.substr(bar + 3)};
}

void LinkCase::playSteps() {
    kel::test::playTable(GetParam(), [this](const std::string& line) { return play(line); });
}

void LinkCase::make() {
    std::string kind = "stream", instrument, speed = "50";
    std::wstring clock;
    for (std::string setting : GetParam().steps.front().settings) {
        const std::string word = takeWord(setting);
        if (word == "alone") {
            object_ = newObject(classes_.at(setting));
            return;
        }
        if (word == "on") kind = setting;
        if (word == "instrument") instrument = setting;
        if (word == "speed") speed = setting;
        if (word == "clock") clock = com::widen(setting);
    }
    if (instrument.empty()) {
        if (!clock.empty()) scale.emplace(clock.c_str());
        reach(peer_.port());
        acceptPeer();
    } else {
        const InstrumentOptions options = instrumentOf(instrument);
        card_ = options.card;
        connect(options, std::stod(speed), clock.empty() ? nullptr : clock.c_str());
    }
    values_ = {{"$stream", com::Variant(static_cast<IDispatch*>(stream.Get()))},
               {"$link", com::Variant(static_cast<IDispatch*>(link.Get()))},
               {"$nothing", com::Variant(static_cast<IDispatch*>(nullptr))}};
    ComPtr<IRecorderAccess> recorder;
    if (kind == "stream") {
        object_ = stream;
    } else if (kind == "communicator") {
        object_ = link;
    } else if (kind == "recorder") {
        com::check(link.As(&recorder));
        object_ = recorder;
        listen(DIID__IRecorderAccessEvents);
    } else {
        object_ = newObject(classes_.at(kind));
        EXPECT_EQ(call(object_.Get(), "Attach $link"), "");
        if (kind == "uploader") listen(DIID__IFirmwareUploaderEvents);
    }
}

std::string LinkCase::play(const std::string& line) {
    std::string rest = line;
    for (const auto& [name, stands] : names_)
        replace(rest, name, stands);
    const std::string word = takeWord(rest);
    std::string shown = act(word, rest);
    for (const auto& [name, stands] : names_) {
        std::string inTexts = stands;
        replace(inTexts, "\\", "\\\\");
        replace(shown, inTexts, name);
        replace(shown, stands, name);
    }
    replace(shown, "\t", "\\t");
    shown.insert(0, std::exchange(shownLater_, {}));
    return shown.empty() || shown.ends_with('\n') ? shown : shown + "\n";
}

std::string LinkCase::act(const std::string& word, std::string rest) {
    const std::map<std::string_view, std::function<std::string()>> words = {
        {"quiet", [&] { return play(rest), ""; }},
        {"say", [&] { return peer_.send(rest), ""; }},
        {"arrive",
         [&] {
             peer_.send(rest);
             long waiting = 0;
             while (waiting < static_cast<long>(rest.size()))
                 com::check(stream->get_BytesInReadBuffer(&waiting));
             return "";
         }},
        {"hear", [&] { return inQuotes(peer_.receive(std::stoul(rest))); }},
        {"answer", [&] { return answerAs(rest); }},
        {"vanish", [&] { return peer_.vanish(), ""; }},
        {"closed",
         [&] {
             for (VARIANT_BOOL open = VARIANT_TRUE; com::isTrue(open); stream->get_IsOpen(&open))
                 stream->Sleep(1);
             return "";
         }},
        {"greet", [&] { return greet(); }},
        {"gate", [&] { return gateway_.send(rest), ""; }},
        {"drop", [&] { return gateway_.vanish(), ""; }},
        {"later",
         [&] {
             later_.push_back(rest);
             if (later_.size() == 1) window.post([this] { runLater(); });
             return "";
         }},
        {"shown", [&] { return inQuotes(com::narrow(window.shown(), CP_UTF8)); }},
        {"echo",
         [&] {
             const long shows = echoWindow();
             return shows == window.number() ? "ours" : std::to_string(shows);
         }},
        {"repeat",
         [&] {
             for (const auto size = window.shown().size() + 8; window.shown().size() < size;)
                 call(object_.Get(), rest);
             return "";
         }},
        {"error", [&] { return std::to_string(error_); }},
        {"leave", [&] { return object_.Reset(), ""; }},
        {"release", [&] { return object_.Reset(), values_.clear(), TearDown(), ""; }},
        {"quit", [&] { return PostQuitMessage(7), ""; }},
        {"message",
         [&] {
             MSG message{};
             const BOOL isOrdinary = GetMessageW(&message, nullptr, 0, 0);
             return isOrdinary ? "an ordinary one" : std::to_string(message.wParam);
         }},
        {"nulls",
         [&] { return kel::test::expectNullPointersRefused(object_.Get(), com::widen(rest)), ""; }},
        {"events", [&] { return std::exchange(sink_->events, {}); }},
        {"last", [&] { return lastLine(std::exchange(sink_->events, {})); }},
        {"told",
         [&] {
             return std::exchange(sink_->events, {}).find(rest) == std::string::npos ? "no" : "yes";
         }},
        {"confirm", [&] { return sink_->answer = rest == "yes", ""; }},
        {"inside", [&] { return inside_.insert(halves(rest)), ""; }},
        {"elsewhere", [&] { return callElsewhere(rest, false); }},
        {"leaving", [&] { return callElsewhere(rest, true); }},
        {"meanwhile", [&] { return meanwhile_ = rest, ""; }},
        {"file",
         [&] {
             const std::string name = takeWord(rest);
             std::string bytes;
             for (int times = std::stoi(takeWord(rest)); times > 0; --times)
                 bytes += rest;
             return folder_.file(com::widen(name), bytes), "";
         }},
        {"files", [&] { return folderContent(); }},
        {"content", [&] { return inQuotes(folder_.content(com::widen(rest))); }},
        {"loaded", [&] { return isLoaded(rest); }},
        {"much",
         [&] { return values_["$much"] = com::Variant(std::wstring(std::stoul(rest), L'x')), ""; }},
    };
    const auto known = words.find(word);
    if (known != words.end()) return known->second();
    if (word[0] != '$' || !rest.starts_with("= "))
        return call(object_.Get(), rest.empty() ? word : word + " " + rest);
    takeWord(rest);
    // "$more = new serial", "$files = ReadListing", to be used later.
    if (rest.starts_with("new ")) {
        values_[word] = com::Variant(newObject(classes_.at(rest.substr(4))).Get());
        return "";
    }
    const auto outcome = invoked(object_.Get(), rest);
    values_[word] = outcome.outs.empty() ? outcome.result : outcome.outs.front();
    return outcome.code == S_OK ? "" : kel::test::show(outcome);
}

// Of the object that the line names, if it does.
kel::test::Outcome LinkCase::invoked(IDispatch* object, std::string line) {
    const auto named = values_.find(line.substr(0, line.find(' ')));
    if (named != values_.end()) {
        object = named->second.get().pdispVal;
        takeWord(line);
    }
    if (!object) throw com::Error(E_POINTER, com::widen(line));
    const auto outcome = kel::test::invoke(object, line, values_);
    if (outcome.code == DISP_E_UNKNOWNNAME) throw com::Error(outcome.code, com::widen(line));
    error_ = outcome.lastError;
    return outcome;
}

// One line, or several with "&" between them. An answer waits for its command, and does so without
// holding up whoever is to send that.
void LinkCase::runLater() {
    const std::string lines = later_.front();
    if (lines.find("answer ") != lines.npos) heard_ += peer_.receiveSome();
    if (lines.find("answer ") != lines.npos && !heard_.ends_with('\r'))
        return window.post([this] { runLater(); });
    later_.pop_front();
    // Where one of them waits, the next come inside its wait.
    if (!later_.empty()) window.post([this] { runLater(); });
    shownLater_ = playEach(lines);
}

std::string LinkCase::playEach(const std::string& lines) {
    const std::size_t end = lines.find(" & ");
    const std::string shown = play(lines.substr(0, end));
    return end == lines.npos ? shown : shown + playEach(lines.substr(end + 3));
}

// "sernum | Serial Number: D123.\r\n>": echoes a command that was heard, and says more.
std::string LinkCase::answerAs(const std::string& dialogue) {
    const auto [command, answer] = halves(dialogue);
    const std::string heard = std::exchange(heard_, {});
    peer_.send(command + "\r\n" + answer);
    return heard == command + "\r" ? "" : inQuotes(heard);
}

// The gateway takes a client and hears its line.
std::string LinkCase::greet() {
    gateway_.vanish();
    gateway_.accept();
    std::string heard;
    while (!heard.ends_with('\n'))
        heard += gateway_.receive(1);
    return inQuotes(heard);
}

void LinkCase::listen(const IID& events) {
    sinkOwner_ = com::createObject<kel::test::EventSink>(nullptr, &sink_);
    sink_->onEvent = [this](DISPID) { return doInside(), S_OK; };
    DWORD cookie = 0;
    com::check(kel::test::eventsOf(object_.Get(), events)->Advise(sinkOwner_.Get(), &cookie));
}

// What it shows stands among the events.
void LinkCase::doInside() {
    const std::string event = lastLine(sink_->events);
    const auto found = std::ranges::find_if(
        inside_, [&](const auto& each) { return event.starts_with(each.first); });
    if (found == inside_.end()) return;
    const std::string line = found->second;
    inside_.erase(found);
    sink_->events += playEach(line);
}

// Another thread gets the objects as any thread would, while this one runs its message loop; our
// references may go before the call.
std::string LinkCase::callElsewhere(const std::string& line, bool leaves) {
    std::vector<Passed> passed{Passed(object_.Get())};
    for (const auto& [name, value] : values_)
        if (line.find(name) != line.npos) passed.emplace_back(value.get().pdispVal);
    std::string shown;
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            std::vector<ComPtr<IDispatch>> there;
            for (const Passed& each : passed)
                there.push_back(each.arrive());
            if (leaves) {
                object_.Reset();
                values_.clear();
                link.Reset();
            }
            shown = call(there.front().Get(), line);
        }
        CoUninitialize();
        isDone = true;
    });
    while (!isDone) {
        com::sleepUntilMessage(std::chrono::milliseconds(2));
        com::runWaitingMessages();
        if (!meanwhile_.empty()) call(object_.Get(), meanwhile_);
    }
    other.join();
    EXPECT_TRUE(com::runWaitingMessages());
    return shown;
}

// "plain.bin main 12004": whether a bank has the bytes of a file there, and an erased one behind.
std::string LinkCase::isLoaded(const std::string& place) {
    std::istringstream words(place);
    std::string file, bank, address;
    words >> file >> bank >> address;
    const std::string expected = folder_.content(com::widen(file)) + "\xFF";
    const std::string command =
        "firmware read " + bank + " " + address + " " + std::to_string(expected.size());
    Bstr answer;
    VARIANT_BOOL done = VARIANT_FALSE;
    stream->WriteString(Bstr(command).get(), VARIANT_TRUE, 0, &done);
    stream->WaitForString(Bstr(L"DATA ").get(), 30000, nullptr, answer.put(), &done);
    stream->WaitForString(Bstr(L"\r\n>").get(), 30000, nullptr, answer.put(), &done);
    return text(answer).find("\r\n" + expected + "\r\n>") != std::string::npos ? "yes" : "no";
}

// Each file with its size, and whether it is as one on the card; another one's text.
std::string LinkCase::folderContent() const {
    std::string shown;
    const Card card(card_);
    for (const std::wstring& name : folder_.names()) {
        const std::string content = folder_.content(name);
        const bool isOfCard = std::ranges::any_of(card.files(), [&](const CardFile& file) {
            return com::widen(file.name) == name &&
                   content == cardContent(file, 0, static_cast<std::size_t>(file.size));
        });
        shown += com::narrow(name) + " " + std::to_string(content.size()) +
                 (isOfCard ? " as on the card" : " " + inQuotes(content.substr(0, 20))) + "\n";
    }
    return shown.empty() ? "no files" : shown;
}

}  // namespace kel::bench::test
