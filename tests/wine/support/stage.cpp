#include "tests/wine/support/stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "com/message_loop.h"
#include "com/text.h"
#include "com/variant.h"
#include "interfaces/link_classes.h"
#include "settings/vocabulary.h"
#include "tests/support/cases.h"
#include "tests/support/project_file.h"
#include "tests/support/temporary_file.h"
#include "tests/wine/support/bench_link.h"
#include "tests/wine/support/late_bound.h"
#include "tests/wine/support/library.h"

namespace kel::test {
namespace {

// Ticks once, when nothing else is left to do.
std::atomic<int> rounds = 0;

void CALLBACK endRound(HWND window, UINT, UINT_PTR timer, DWORD) {
    KillTimer(window, timer);
    ++rounds;
}

constexpr std::chrono::seconds kLongestHold{10};

void replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
}

[[noreturn]] void refuse(const std::string& line) {
    throw std::invalid_argument("not understood: " + line);
}

}  // namespace

std::wstring widened(const std::string& text) {
    return com::widen(text, CP_UTF8);
}

void Transcript::tell(std::string line) {
    const std::lock_guard lock(mutex_);
    for (const auto& [text, sign] : signs_)
        replace(line, text, sign);
    steps_.back() += escaped(line) + "\n";
}

void Transcript::abbreviate(const std::string& text, const std::string& sign) {
    const std::lock_guard lock(mutex_);
    signs_[text] = sign;
}

bool Transcript::tells(const std::string& start) const {
    const std::lock_guard lock(mutex_);
    return ("\n" + steps_.back()).find("\n" + start) != std::string::npos;
}

void Transcript::forget() {
    const std::lock_guard lock(mutex_);
    steps_.back().clear();
}

void Transcript::nextStep() {
    const std::lock_guard lock(mutex_);
    steps_.emplace_back();
}

std::string Transcript::step(std::size_t index) const {
    const std::lock_guard lock(mutex_);
    return index < steps_.size() ? steps_[index] : "";
}

Stage::Stage(long failing) : failing_(failing) {
    // As users have it while nothing keeps them waiting.
    SetCursor(LoadCursor(nullptr, IDC_ARROW));
    serial_.emplace(link::kSerialStreamClass, ports.port());
    network_.emplace(link::kNetworkStreamClass, ports.network());
    link.onCall = [this](const std::string& call) {
        if (tellsCalls_ && call != "Sleep 1") transcript.tell(call);
        if (!held_.empty() && call.starts_with(held_)) hold();
    };
    if (failing_ > 0) link.failCall(failing_);
}

Stage::~Stage() {
    if (owner_) DestroyWindow(owner_);
}

bool Stage::hasFailed() const {
    return mayFail() || (failing_ > 0 && link.callCount() >= failing_);
}

void Stage::playInside(DialogDriver& user, const std::string& line) {
    const int before = rounds;
    window_.post([this, line] {
        SetTimer(window_.handle(), 1, USER_TIMER_MINIMUM, endRound);
        try {
            if (!line.empty()) play(line);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << "'" << line << "': " << failure.what();
        }
    });
    user.waitUntil("the thread of the dialogs", [&] { return rounds != before; });
}

void Stage::play(const std::string& line) {
    std::string rest = expanded(line);
    if (std::isupper(static_cast<unsigned char>(rest[0]))) return call(rest);
    const std::string word = takeWord(rest);
    const std::map<std::string_view, std::function<void()>> words = {
        {"make", [&] { make(rest); }},
        {"release", [&] { object_.Reset(); }},
        {"link", [&] { setLink(rest); }},
        {"port", [&] { setPort(rest); }},
        {"password", [&] { ports.gatewayPassword = widened(rest); }},
        {"answer", [&] { setAnswers(rest); }},
        {"class", [&] { setClass(rest); }},
        {"fail", [&] { setFailure(rest); }},
        {"remember", [&] { remember(rest); }},
        {"recall", [&] { recall(rest); }},
        {"file", [&] { folder_->file(widened(rest), ""); }},
        {"write",
         [&] {
             const std::string name = takeWord(rest);
             folder_->file(widened(name), rest);
         }},
        {"folder",
         [&] { CreateDirectoryW((folder_->path() + L"\\" + widened(rest)).c_str(), nullptr); }},
        {"same", [&] { compareFile(rest); }},
        {"hold", [&] { held_ = rest; }},
        {"go", [&] { held_.clear(); }},
        {"owner", [&] { rest == "gone" ? void(DestroyWindow(owner_)) : refuse(line); }},
        {"tell",
         [&] {
             tellsCalls_ = rest != "nothing";
             link.tellsFetches = rest == "fetches";
         }},
        {"forget", [&] { transcript.forget(); }},
        {"order", [&] { checkOrder(rest); }},
        {"|", [&] { script_ += rest + "\n"; }},
        {"script",
         [&] {
             std::ifstream file(projectFile(rest));
             script_.assign(std::istreambuf_iterator<char>(file), {});
         }},
        {"run",
         [&] {
             const com::Variant script(widened(std::exchange(script_, {})));
             call("PreprocessAndRun script", {{"script", script}});
         }},
        {"variables", [&] { tellVariables(); }},
        // Of the scene as a whole.
        {"every", [&] { rest == "call fails" ? void() : refuse(line); }},
    };
    const auto known = words.find(word);
    if (known != words.end()) return known->second();
    const auto maker = propMakers().find(word);
    if (maker == propMakers().end()) refuse(line);
    std::unique_ptr<Prop>& prop = props_[word];
    if (!prop) prop = maker->second(*this);
    prop->prepare(rest);
}

// The link runs messages while it waits.
void Stage::hold() {
    const auto end = std::chrono::steady_clock::now() + kLongestHold;
    const std::string held = held_;
    while (held_ == held) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "held for ever: " << std::exchange(held_, {});
        }
        com::sleepUntilMessage(std::chrono::milliseconds(10));
        com::runWaitingMessages();
    }
}

// "report.html tests/reports/whole.html", "report.html none"
void Stage::compareFile(std::string line) const {
    const std::string name = takeWord(line);
    const std::string expected =
        line == "none" ? line : asTextFile(TemporaryFile::bytesOf(projectFile(line)));
    EXPECT_EQ(folder_->content(widened(name)), expected) << name;
}

void Stage::make(std::string line) {
    CLSID component{};
    com::check(CLSIDFromProgID((L"KelUtils." + widened(takeWord(line))).c_str(), &component));
    object_ = kelUtils().create<IDispatch>(component);
    if (line == "alone") return;
    const com::Variant own(static_cast<IDispatch*>(link.communicator()));
    const HRESULT code = invoke(object_.Get(), "Communicator = own", {{"own", own}}).code;
    if (code != DISP_E_UNKNOWNNAME) com::check(code);
}

void Stage::call(const std::string& line, const std::map<std::string, com::Variant>& values) {
    // Its last reference may go in the middle.
    IDispatch* const object = object_.Get();
    if (!object) throw std::runtime_error("there is no component");
    const HCURSOR cursor = GetCursor();
    auto known = values;
    known["$nothing"] = com::Variant(static_cast<IDispatch*>(nullptr));
    const Outcome outcome = invoke(object, line, known);
    if (mayFail()) return;
    EXPECT_EQ(GetCursor(), cursor) << line;
    if (outcome.code == DISP_E_UNKNOWNNAME) refuse(line);
    if (failing_ > 0 && outcome.code != S_OK) {
        // Only connection points publish no reason.
        const bool hasReason = outcome.reason.find("fails on demand") != std::string::npos;
        EXPECT_TRUE(outcome.code == E_ACCESSDENIED && (hasReason || link.calls.back() == "Advise"))
            << show(outcome);
    }
    const std::string shown = show(outcome);
    if (!shown.empty()) transcript.tell(shown);
}

void Stage::setLink(std::string line) {
    const std::string name = takeWord(line);
    const std::map<std::string_view, std::function<void()>> settings = {
        {"Port",
         [&] {
             link.hasPort = line != "none";
             link.isNetwork = line == "network";
         }},
        {"ConnectionString", [&] { link.connectionString = widened(line); }},
        {"BaudRate", [&] { link.baudRate = std::stol(line); }},
        {"EchoWindow", [&] { link.echoWindow = std::stol(line); }},
        {"IdleProcessing", [&] { link.isIdleProcessing = line == "true"; }},
        {"RadioConnection", [&] { link.isRadio = line == "true"; }},
        {"SDI12Mode", [&] { link.isSdi12 = line == "true"; }},
        {"Reply", [&] { link.reply = widened(line); }},
    };
    const auto known = settings.find(name);
    if (known == settings.end()) refuse("link " + name);
    known->second();
}

// "COM3 COM4 absent", "COM2 busy 5", "COM2 free"
void Stage::setPort(std::string line) {
    std::vector<std::wstring> names;
    while (line.starts_with("COM"))
        names.push_back(widened(takeWord(line)));
    const std::string state = takeWord(line);
    if (names.empty() || (state != "free" && state != "absent" && state != "busy")) refuse(state);
    for (const std::wstring& name : names) {
        ports.absentPorts.erase(name);
        ports.busyPorts.erase(name);
        if (state == "absent") ports.absentPorts[name] = 0;
        if (state == "busy") ports.busyPorts[name] = static_cast<DWORD>(std::stoul(line));
    }
}

// "Link.SendCommand false true", "new ConnectTo false"
void Stage::setAnswers(std::string line) {
    FakeLink& called = line.starts_with("new ") ? ports : link;
    if (&called == &ports) takeWord(line);
    std::deque<bool>& answers = called.answers[takeWord(line)];
    answers.clear();
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        if (word != "true" && word != "false") refuse(line);
        answers.push_back(word == "true");
    }
    if (answers.empty()) refuse(line);
}

// "serial none", "network bench", "network double"; "network hasty" measures time a hundred times
// faster.
void Stage::setClass(std::string line) {
    const std::string name = takeWord(line);
    const bool isSerial = name == "serial";
    if (!isSerial && name != "network") refuse(name);
    const CLSID& identifier = isSerial ? link::kSerialStreamClass : link::kNetworkStreamClass;
    std::optional<ClassObject>& place = isSerial ? serial_ : network_;
    com::ComPtr<IUnknown> object;
    if (line == "bench" || line == "hasty") {
        std::optional<bench::test::TimeScale> scale;
        if (line == "hasty") scale.emplace(L"100");
        object = benchLink().create<IUnknown>(identifier);
    } else if (line == "double") {
        object = isSerial ? static_cast<IUnknown*>(ports.port()) : ports.network();
    } else if (line != "none") {
        refuse(line);
    }
    place.reset();
    place.emplace(identifier, object.Get());
}

// "call 3", the third from now; "put_Port"
void Stage::setFailure(std::string line) {
    const std::string name = takeWord(line);
    if (name != "call") return link.failMethod(widened(name).c_str());
    link.failCall(std::stol(line));
}

void Stage::recall(const std::string& section) {
    const std::string start = settings::kRoot + section;
    for (const std::string& line : store_.listing()) {
        const std::size_t found = line.find(start);
        if (found == std::string::npos || line.find(" : ") == std::string::npos) continue;
        std::string rest = line.substr(found + start.size());
        // Of the section itself the names, of those below it their paths as well.
        if (rest.starts_with(" : ")) rest.erase(0, 3);
        transcript.tell(rest);
        recalled += rest + "\n";
    }
}

void Stage::tellVariables() {
    const com::Variant variables = invoke(object_.Get(), "Variables").result;
    IDispatch* const all = variables.get().pdispVal;
    const auto told = [&](const std::string& line) {
        return com::narrow(com::widen(invoke(all, line).result.toText()), CP_UTF8);
    };
    const int count = std::stoi(told("Count"));
    for (int i = 0; i < count; ++i)
        transcript.tell(told("Name " + std::to_string(i)) + "=" +
                        told("Item " + std::to_string(i)));
}

// "FIRST | SECOND": no call that begins with the second stands before one that begins with the
// first.
void Stage::checkOrder(const std::string& line) const {
    const std::size_t bar = line.find(" | ");
    if (bar == line.npos) refuse(line);
    const auto find = [&](const std::string& start) {
        return std::ranges::find_if(
            link.calls, [&](const std::string& call) { return call.starts_with(start); });
    };
    const auto second = find(line.substr(bar + 3));
    if (second != link.calls.end()) {
        EXPECT_LT(find(line.substr(0, bar)), second) << line;
    }
}

std::string Stage::expanded(std::string line) {
    const auto put = [&](const std::string& sign, const std::string& text) {
        transcript.abbreviate(text, sign);
        replace(line, sign, text);
    };
    const std::lock_guard lock(signs_);
    const auto putInstrument = [&](const char* sign, auto& server, std::optional<int> commands) {
        if (line.find(sign) == line.npos) return;
        bench::InstrumentOptions options;
        options.vanishAfter = commands;
        if (!server) server.emplace(options);
        put(sign, "127.0.0.1:" + com::narrow(server->port().view()));
    };
    putInstrument("$instrument", instrument_, std::nullopt);
    putInstrument("$vanishing", vanishing_, 1);
    if (line.find("$peer") != line.npos) {
        if (!peer_) peer_.emplace();
        put("$peer", com::narrow(peer_->port().view()));
    }
    if (line.find("$owner") != line.npos) {
        if (!owner_) {
            owner_ = CreateWindowW(L"STATIC", L"", WS_POPUP, 0, 0, 99, 99, nullptr, nullptr,
                                   nullptr, nullptr);
        }
        replace(line, "$owner", std::to_string(HandleToLong(owner_)));
    }
    if (line.find("$folder") != line.npos || line.starts_with("file ") ||
        line.starts_with("folder ") || line.starts_with("write ")) {
        if (!folder_) folder_.emplace();
        put("$folder", com::narrow(folder_->path(), CP_UTF8));
    }
    return line;
}

}  // namespace kel::test
