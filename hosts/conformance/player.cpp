#include "hosts/conformance/player.h"

#include <winsock2.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <optional>
#include <utility>

#include "com/module.h"
#include "com/object.h"
#include "hosts/conformance/call_line.h"
#include "hosts/conformance/members.h"
#include "hosts/conformance/pane.h"

namespace kel::conformance {
namespace {

constexpr int kPortNumbers = 250;
// The platform's clock may end a wait a little early.
constexpr long kEarly = 20;
constexpr long kLate = 1000;
constexpr long kAtOnce = 250;

// Calls the members of an interface through its table, whatever its own
// IDispatch does.
class TableView final : public com::Object<TableView, com::Plain<IDispatch>> {
public:
    static constexpr com::ClassDescription kClass{};

    TableView(IUnknown* object, const IID& interfaceId) : type_(com::typeInfo(interfaceId)) {
        com::check(object->QueryInterface(interfaceId, &object_));
    }

    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                               DISPID* members) override {
        return type_->GetIDsOfNames(names, count, members);
    }
    STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* failure, UINT* argument) override {
        return com::guard(IID_IDispatch, nullptr, [&] {
            return com::invoke(type_.Get(), object_.Get(), member, flags, *arguments, result,
                               failure, argument);
        });
    }

    // The members that accept a null pointer, with the parameter.
    std::string nulls() const {
        std::string accepted;
        passNulls(object_.Get(), type_,
                  [&](ITypeInfo* declaredBy, const FUNCDESC& member, int parameter, HRESULT code) {
                      if (code == E_POINTER) return;
                      accepted +=
                          nameOf(declaredBy, member.memid) + " " + std::to_string(parameter) + "; ";
                  });
        return accepted.empty() ? "none" : accepted;
    }

private:
    ComPtr<ITypeInfo> type_;
    ComPtr<IUnknown> object_;  // the interface itself
};

// Remembers the script that it is to run.
class Runner final : public com::Object<Runner, com::Dual<IPreprocessor>> {
public:
    static constexpr com::ClassDescription kClass{};

    std::wstring script;
    bool runsToEnd = true;

    STDMETHODIMP PreprocessAndRun(BSTR text, VARIANT_BOOL* result) override {
        return guarded<IPreprocessor>([&] {
            script = com::view(text);
            std::erase(script, L'\r');
            com::out(result) = com::variantBool(runsToEnd);
        });
    }
    STDMETHODIMP get_ParentWindow(long*) override { return E_NOTIMPL; }
    STDMETHODIMP put_ParentWindow(long) override { return E_NOTIMPL; }
};

ULONG references(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

bool isSame(IUnknown* left, IUnknown* right) {
    ComPtr<IUnknown> first, second;
    if (left) left->QueryInterface(IID_PPV_ARGS(&first));
    if (right) right->QueryInterface(IID_PPV_ARGS(&second));
    return first.Get() == second.Get();
}

// The name of a port that the machine has not: the platform's own word for it.
std::wstring absentPort() {
    for (int number = kPortNumbers; number > 0; --number) {
        const std::wstring name = L"COM" + std::to_wstring(number);
        wchar_t target[MAX_PATH];
        if (QueryDosDeviceW(name.c_str(), target, MAX_PATH) == 0) return name;
    }
    throw NotTried("the machine has all ports");
}

// A port of this machine on which nobody listens.
std::wstring deafPort() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    const bool bound = bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    closesocket(socket);
    if (!bound) throw NotTried("this machine gives no port");
    return std::to_wstring(ntohs(address.sin_port));
}

std::wstring bare(std::wstring name) {
    if (name.ends_with(L':')) name.pop_back();
    std::ranges::transform(name, name.begin(), ::towupper);
    return name;
}

class Player {
public:
    Player(const Rule& rule, const Link& link) : link_(link), isEchoing_(rule.wire == "echoing") {
        wire_ = rule.wire == "closed"      ? link.closedWire()
                : rule.wire == "connected" ? link.wire()
                                           : link.echoingWire();
        if (isEchoing_ && rule.subject == "link") {
            succeeded(communicator()->put_Port(wire_.stream.Get()), "putting Port");
        }
        target_ = viewOfStream(wire_);
    }
    ~Player() {
        if (communicator_) communicator_->put_Port(nullptr);
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // What a line shows.
    std::string play(const std::string& line);
    // With the values of words that begin with "$".
    std::string expanded(std::string text);

private:
    std::optional<std::string> acted(const std::string& word, const std::string& rest);
    std::optional<std::string> modified(const std::string& word, std::string& line);
    std::string called(const std::string& line, bool isBrief = false);
    std::string shownValue(const com::Variant& value);
    std::string items() const;
    const TemporaryFile& file() { return file_ ? *file_ : file_.emplace(); }
    std::wstring valueOf(const std::string& name);
    ULONG count() { return references(wire_.stream.Get()) + references(runner_->controlling()); }
    ComPtr<TableView> viewOfStream(const Wire& wire) const;
    void choose(const std::string& name);
    IKelCommunicator* communicator();

    const Link& link_;
    bool isEchoing_;
    const ComPtr<Runner> runner_ = com::makeObject<Runner>();
    Wire wire_;
    std::optional<Wire> used_;  // another one, which is in use
    ComPtr<IKelCommunicator> communicator_;
    ComPtr<ICollection> collection_;
    ComPtr<TableView> target_;
    std::optional<EchoPane> pane_;
    std::optional<PostedMessage> message_;
    std::optional<TemporaryFile> file_;
    com::Variant last_;  // array that a call gave
    std::string collected_;
    DWORD error_ = 0;
    std::wstring absent_, deaf_;
    std::optional<ULONG> references_;
};

ComPtr<TableView> Player::viewOfStream(const Wire& wire) const {
    if (link_.kind() == Kind::kSerial)
        return com::makeObject<TableView>(wire.stream.Get(), __uuidof(ISerialStream));
    ComPtr<INetworkStream2> guarded;
    wire.stream.As(&guarded);
    return com::makeObject<TableView>(
        wire.stream.Get(), guarded ? __uuidof(INetworkStream2) : __uuidof(INetworkStream));
}

IKelCommunicator* Player::communicator() {
    if (!communicator_) communicator_ = link_.communicator();
    return communicator_.Get();
}

void Player::choose(const std::string& name) {
    if (name == "stream") target_ = viewOfStream(wire_);
    if (name == "used") target_ = viewOfStream(*used_);
    if (name == "link")
        target_ = com::makeObject<TableView>(communicator(), __uuidof(IKelCommunicator));
    if (name != "collection") return;
    collection_ = link_.collection();
    target_ = com::makeObject<TableView>(collection_.Get(), __uuidof(ICollection));
}

std::wstring Player::valueOf(const std::string& name) {
    const Setup& setup = link_.setup();
    if (name == "port") {
        if (setup.serialPort.empty()) throw NotTried("no serial port was named (--serial)");
        return bare(setup.serialPort);
    }
    if (name == "baud") return std::to_wstring(setup.baudRate);
    if (name == "command") return setup.command;
    if (name == "address") return bare(setup.host + L":" + setup.port);
    if (name == "pane") return std::to_wstring(pane_->number());
    if (name == "absent") return absent_.empty() ? absent_ = absentPort() : absent_;
    if (name == "deaf") return deaf_.empty() ? deaf_ = deafPort() : deaf_;
    if (name == "file") return file().path;
    return L"$" + com::widen(name);  // an object or an array, which the call finds
}

std::string Player::expanded(std::string text) {
    for (std::size_t at = text.find('$'); at != text.npos; at = text.find('$', at + 1)) {
        std::size_t end = at + 1;
        while (end < text.size() && std::isalpha(static_cast<unsigned char>(text[end])))
            ++end;
        text.replace(at, end - at, com::narrow(valueOf(text.substr(at + 1, end - at - 1))));
    }
    return text;
}

std::string Player::shownValue(const com::Variant& value) {
    const VARIANT& held = value.get();
    if (held.vt == VT_BOOL) {
        flag(held.boolVal, "a call");
        return com::isTrue(held.boolVal) ? "True" : "False";
    }
    if (held.vt == (VT_ARRAY | VT_UI1)) {
        last_ = value;
        return "\"" + escaped(bytesOf(held, "a call")) + "\"";
    }
    if (held.vt != VT_DISPATCH && held.vt != VT_UNKNOWN) return show(value);
    if (!held.punkVal) return "nothing";
    if (isSame(held.punkVal, wire_.stream.Get())) return "stream";
    return isSame(held.punkVal, runner_->controlling()) ? "runner" : "another object";
}

// A brief one shows the first result only, and collects the text of the others.
std::string Player::called(const std::string& line, bool isBrief) {
    const std::map<std::string, com::Variant> objects = {
        {"$stream", com::Variant(static_cast<IDispatch*>(wire_.stream.Get()))},
        {"$runner", com::Variant(static_cast<IDispatch*>(runner_.Get()))},
        {"$nothing", com::Variant(static_cast<IDispatch*>(nullptr))},
        {"$last", last_}};
    const Outcome outcome = invoke(target_.Get(), expanded(line), objects);
    error_ = outcome.lastError;
    if (outcome.code == DISP_E_UNKNOWNNAME) throw NotTried("the link has no such member: " + line);
    if (FAILED(outcome.code)) {
        const std::string code = codeText(outcome.code);
        return outcome.reason.empty() ? "fails without a reason, " + code : "fails";
    }
    std::string shown = shownValue(outcome.result);
    for (const com::Variant& out : outcome.outs) {
        const std::string text = shownValue(out);
        if (isBrief && out.type() == VT_BSTR) collected_ += out.toText();
        if (!isBrief) shown += " " + text;
    }
    return outcome.result.type() == VT_EMPTY && !shown.empty() ? shown.substr(1) : shown;
}

// What a word before a call makes of it.
std::optional<std::string> Player::modified(const std::string& word, std::string& line) {
    const auto number = [&] { return std::stol(takeWord(line)); };
    if (word == "quiet") return play(line), "";
    if (word == "brief" || word == "collect") return called(line, true);
    if (word == "some") return play(line) == "\"\"" ? "nothing" : "something";
    if (word == "bare") {
        const std::string name = play(line);
        return com::narrow(bare(com::widen(name.substr(1, name.size() - 2))));
    }
    if (word == "refused") {
        const std::string shown = called(line, true);
        return shown == "False" || shown == "fails" ? "refused" : shown;
    }
    const bool isTimed = word == "timed";
    if (isTimed || word == "within") {
        const long limit = number();
        const Watch watch;
        const std::string shown = isTimed ? called(line, true) : play(line);
        const long time = watch.elapsed();
        if (!isTimed) return shown + (time > limit ? " late" : "");
        if (!shown.empty() && shown != "False") return shown;
        const bool isInTime =
            limit == 0 ? time <= kAtOnce : time >= limit - kEarly && time <= limit + kLate;
        return isInTime ? "in time" : "after " + std::to_string(time) + " ms";
    }
    if (word == "until" || word == "repeat") {
        const long wanted = number();
        const bool counts = word == "until";
        std::string shown = "0";
        for (const Watch watch; !watch.patienceIsOver();) {
            if ((counts ? std::stol(shown) : static_cast<long>(pane_->text().size())) >= wanted)
                return "";
            shown = called(line, !counts);
            // What another thread sends gets through now.
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
        }
        return counts ? shown : "";
    }
    return std::nullopt;
}

// What the other end, windows, files and objects do; nothing for a word that is
// none of these.
std::optional<std::string> Player::acted(const std::string& word, const std::string& rest) {
    const auto quoted = [](const std::string& text) { return "\"" + escaped(text) + "\""; };
    if (word == "on") return choose(rest), "";
    if (word == "fresh") return wire_ = link_.closedWire(), choose("stream"), "";
    if (word == "use") return used_ = isEchoing_ ? link_.echoingWire() : link_.wire(), "";
    if (word == "settle") return wire_.settle(), "";
    if (word == "echoes") {
        if (rest.empty() || link_.setup().echoing) (used_ ? *used_ : wire_).expectEchoes("then");
        return word;
    }
    if (word == "pane") return pane_.emplace(), called("EchoWindow = $pane");
    if (word == "gone") return pane_.reset(), "";
    if (word == "shown") return quoted(com::narrow(pane_->text()));
    if (word == "elsewhere") return pane_->isFedFromElsewhere() ? "yes" : "no";
    if (word == "post") return message_.emplace(), "";
    if (word == "arrived") return message_->arrived() ? "yes" : "no";
    if (word == "nulls") return target_->nulls();
    if (word == "error") return error_ ? "told" : "0";
    if (word == "forget") return collected_.clear(), "";
    if (word == "collected") return quoted(collected_.substr(0, std::stoul(rest)));
    if (word == "file") return file().write(rest.substr(1, rest.size() - 2).c_str()), "";
    if (word == "content") return quoted(file().content());
    if (word == "delete") return DeleteFileW(file().path), "";
    if (word == "runner") return runner_->runsToEnd = rest == "true", "";
    if (word == "heard") return quoted(com::narrow(std::exchange(runner_->script, {})));
    if (word == "references") {
        if (!references_) references_ = count();
        return std::to_string(static_cast<long>(count() - *references_));
    }
    if (word == "each") return items();
    if (word == "late") {
        const auto outcome = invoke(wire_.stream.Get(), rest);
        return "member " + std::to_string(outcome.member) + ": " + shownValue(outcome.result);
    }
    return std::nullopt;
}

std::string Player::items() const {
    ComPtr<IUnknown> items;
    succeeded(collection_->get__NewEnum(&items), "_NewEnum");
    ComPtr<IEnumVARIANT> enumerator;
    succeeded(items.As(&enumerator), "QueryInterface");
    std::string shown;
    for (com::Variant item; enumerator->Next(1, item.put(), nullptr) == S_OK;)
        shown += (shown.empty() ? "" : " ") + item.toText();
    return shown;
}

std::string Player::play(const std::string& line) {
    std::string rest = line;
    const std::string word = takeWord(rest);
    if (auto shown = acted(word, rest)) return *shown;
    if (auto shown = modified(word, rest)) return *shown;
    return called(line);
}

void playVariant(const Rule& rule, const std::string& variant, const Link& link) {
    Player player(rule, link);
    for (const Step& step : rule.lines.steps) {
        std::string shown, played;
        for (std::string line : step.lines) {
            if (const auto star = line.find('*'); star != line.npos) line.replace(star, 1, variant);
            const std::string result = player.play(line);
            if (!result.empty()) shown += result + "\n";
            played += (played.empty() ? "" : "; ") + line;
        }
        const std::string expected = player.expanded(step.expected);
        expect(shown == expected, escaped(expected) + " of " + escaped(played),
               "it was " + escaped(shown));
    }
}

}  // namespace

void play(const Rule& rule, const Link& link) {
    for (const std::string& variant : rule.variants)
        playVariant(rule, variant, link);
}

}  // namespace kel::conformance
