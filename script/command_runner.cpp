#include "script/command_runner.h"

#include <algorithm>
#include <cstdlib>

#include "com/port.h"
#include "com/variant.h"
#include "script/line_sink.h"

namespace kel::script {
namespace {

enum DirectiveCode {
    kWait,
    kWaitPrompt,
    kWaitOk,
    kSendBreak,
    kWakeUp,
    kMessageBox,
    kSetBaudRate,
    kRunScript,
    kSetComm
};

enum FunctionCode { kDate, kTime, kSerialNumber };

// Never sent by an instrument, so that a wait for it lasts its whole time.
constexpr wchar_t kTextThatNeverComes[] = L"tavi korimel#862";

constexpr long kOneSecond = 1000;
constexpr long kBreakDuration = 300;
constexpr long kReplyTimeout = 3000;
constexpr long kDefaultBaudRate = 9600;

bool waitForText(const com::ComPtr<IKelCommunicator>& link, std::wstring_view text,
                 bool stopOnPrompt) {
    VARIANT_BOOL found = VARIANT_FALSE;
    com::check(link->WaitForString(com::Bstr(text).get(), kOneSecond,
                                   com::variantBool(stopOnPrompt), &found),
               link);
    return com::isTrue(found);
}

void clearReadBuffer(const com::ComPtr<IKelCommunicator>& link) {
    const auto port = com::portOf(link);
    if (port) com::check(port->ClearReadBuffer(), port);
}

// A missing file has every attribute bit set, so the test for a folder covers it.
bool isFile(const std::wstring& path) {
    return (GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::wstring inFolder(const com::Bstr& folder, std::wstring_view name) {
    return std::wstring(folder.view()).append(L"\\").append(name);
}

}  // namespace

std::optional<std::string> serialNumberIn(std::string_view reply) {
    const std::size_t colon = reply.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string_view number = reply.substr(colon + 1);
    number = number.substr(0, number.rfind('.'));
    number.remove_prefix(std::min(number.find_first_not_of(' '), number.size()));
    return std::string(number);
}

// The parameters of a directive: texts, and numbers as the C runtime reads them.
class CommandRunner::Parameters {
public:
    explicit Parameters(IFlatCollection* collection) : collection_(collection) {
        if (!collection) throw com::Error(E_INVALIDARG);
        com::check(collection_->get_Count(&count_), collection_);
    }

    bool has(long index) const { return index < count_; }

    com::Bstr text(long index) const {
        com::Variant value;
        com::check(collection_->get_Item(com::Variant(index).get(), value.put()), collection_);
        return com::Bstr(com::view(value.convertedTo(VT_BSTR).get().bstrVal));
    }

    long number(long index, long missing) const {
        if (!has(index)) return missing;
        return std::strtol(com::narrow(text(index).view()).c_str(), nullptr, 10);
    }

private:
    com::ComPtr<IFlatCollection> collection_;
    long count_ = 0;
};

const std::initializer_list<CommandRunner::Word> CommandRunner::kDirectives = {
    {L"WAIT", kWait},
    {L"WAIT_PROMPT", kWaitPrompt},
    {L"WAIT_OK", kWaitOk},
    {L"SENDBREAK", kSendBreak},
    {L"WAKEUP", kWakeUp},
    {L"MSGBOX", kMessageBox},
    {L"SETBAUDRATE", kSetBaudRate},
    {L"RUNSCRIPT", kRunScript},
    {L"SETCOMM", kSetComm}};

const std::initializer_list<CommandRunner::Word> CommandRunner::kFunctions = {
    {L"DATE", kDate}, {L"TIME", kTime}, {L"SERIALNUMBER", kSerialNumber}};

CommandRunner::Outcome CommandRunner::runDirective(IKelCommunicator* communicator, long code,
                                                   IFlatCollection* collection) {
    if (code < kWait || code > kSetComm) return {.handled = false};

    const Parameters parameters(collection);
    if (code == kMessageBox) return {.result = messageBox(parameters)};
    if (code == kRunScript) return runScript(communicator, parameters);

    const Link link = communicator;
    switch (code) {
        case kWait:
            return {.result = wait(link, parameters)};
        case kWaitPrompt:
            return {.result = waitFor(link, parameters, L">", "No prompt!")};
        case kWaitOk:
            return {.result = waitFor(link, parameters, L"OK", "WAIT for OK failed!")};
        case kSendBreak:
            return {.result = sendBreak(link)};
        case kWakeUp:
            return {.result = wakeUp(link)};
        case kSetBaudRate:
            return {.result = setBaudRate(link, parameters)};
        default:
            return {.result = setLine(link, parameters)};
    }
}

CommandRunner::Outcome CommandRunner::runFunction(IKelCommunicator* communicator, long code,
                                                  std::string& value) {
    switch (code) {
        case kDate:
            value = dateText(owner_.clock.localTime());
            return {};
        case kTime:
            value = timeText(owner_.clock.localTime());
            return {};
        case kSerialNumber: {
            const std::optional<std::string> number = serialNumber(communicator);
            value = number.value_or("");
            return {.result = number.has_value()};
        }
        default:
            return {.handled = false};
    }
}

// The link shows what comes in while it waits. Without a link there is nothing to wait for.
bool CommandRunner::wait(const Link& link, const Parameters& parameters) {
    if (!link) return true;
    for (long seconds = parameters.number(0, 1); seconds > 0; --seconds) {
        waitForText(link, kTextThatNeverComes, false);
        clearReadBuffer(link);
        if (owner_.state.cancelRequested) break;
    }
    return true;
}

// A cancel is not a failure of the wait: the run tells of it before its next line.
bool CommandRunner::waitFor(const Link& link, const Parameters& parameters, std::wstring_view text,
                            std::string_view failure) {
    if (!link) return fail(failure);
    for (long attempts = parameters.number(0, 1); attempts > 0; --attempts) {
        const bool found = waitForText(link, text, true);
        if (owner_.state.cancelRequested || found) return true;
    }
    return fail(failure);
}

bool CommandRunner::sendBreak(const Link& link) {
    if (!link) return true;
    clearReadBuffer(link);
    com::check(link->SendBreak(kBreakDuration), link);
    return true;
}

bool CommandRunner::wakeUp(const Link& link) {
    if (!link) return false;
    VARIANT_BOOL awake = VARIANT_FALSE;
    com::check(link->WakeUpInstrument(&awake), link);
    return com::isTrue(awake);
}

bool CommandRunner::messageBox(const Parameters& parameters) {
    const com::Bstr text = parameters.has(0) ? parameters.text(0) : com::Bstr(L"");
    const Confirmation confirmation = owner_.interviewer.confirm(text);
    if (confirmation != Confirmation::Cancelled) return confirmation == Confirmation::Ok;
    return fail("Execution canceled!");
}

bool CommandRunner::setBaudRate(const Link& link, const Parameters& parameters) {
    if (!link) return false;
    VARIANT_BOOL radio = VARIANT_FALSE;
    com::check(link->get_RadioConnection(&radio), link);
    if (com::isTrue(radio)) return fail("SETBAUDRATE command is disabled on Radio connection!");

    const auto port = com::portOf(link);
    if (!port) return false;
    com::check(port->put_BaudRate(parameters.number(0, kDefaultBaudRate)), port);
    com::check(port->EchoConnectionInfo(), port);
    return true;
}

CommandRunner::Outcome CommandRunner::runScript(const Link& link, const Parameters& parameters) {
    if (!parameters.has(0)) {
        return {.result = fail("Not enough parameters.\nUsage: #RUNSCRIPT scriptfile.ext\n")};
    }
    const com::Bstr name = parameters.text(0);
    std::wstring path = inFolder(owner_.scriptPath, name.view());
    if (!isFile(path)) path = inFolder(owner_.systemPath, name.view());
    if (!isFile(path)) return {.result = fail("Can't find file ", {com::narrow(path)})};
    if (!link) return {.result = false};

    VARIANT_BOOL result = VARIANT_FALSE;
    const NestingScope nesting(owner_.state, path);
    const HRESULT code = link->RunCommandFile(com::Bstr(std::wstring_view(path)).get(), &result);
    com::check(code, link);
    return {.result = com::isTrue(result), .code = code};
}

bool CommandRunner::setLine(const Link& link, const Parameters& parameters) {
    const com::Bstr parity = parameters.has(0) ? parameters.text(0) : com::Bstr(L"NONE");
    const long dataBits = parameters.number(1, 8);
    const long stopBits = parameters.number(2, 1);

    const auto port = com::portOf(link);
    com::ComPtr<ISerialStream> serial;
    if (!port || FAILED(port.As(&serial))) return false;
    VARIANT_BOOL accepted = VARIANT_FALSE;
    com::check(serial->SetLineSettings(parity.get(), dataBits, stopBits, &accepted), serial);
    if (!com::isTrue(accepted)) return false;

    const std::wstring settings = std::wstring(L"\r\nParity : ").append(parity.view()) +
                                  L" , Data bits : " + std::to_wstring(dataBits) +
                                  L" , Stop bits : " + std::to_wstring(stopBits) + L"\r\n";
    com::check(port->Echo(com::Bstr(L"\r\nCOM settings changed to:").get()), port);
    com::check(port->Echo(com::Bstr(std::wstring_view(settings)).get()), port);
    return true;
}

std::optional<std::string> CommandRunner::serialNumber(const Link& link) {
    const auto port = com::portOf(link);
    if (!port) return std::nullopt;
    VARIANT_BOOL open = VARIANT_FALSE;
    com::check(port->get_IsOpen(&open), port);
    if (!com::isTrue(open) || !wakeUp(link)) return std::nullopt;

    VARIANT_BOOL sent = VARIANT_FALSE;
    com::check(link->SendCommand(com::Bstr(L"sernum").get(), VARIANT_FALSE, kReplyTimeout, &sent),
               link);
    if (!com::isTrue(sent)) return std::nullopt;

    com::Bstr reply;
    VARIANT_BOOL complete = VARIANT_FALSE;
    com::check(port->WaitForString(com::Bstr(L"\r\n>").get(), kReplyTimeout, com::Bstr(L"").get(),
                                   reply.put(), &complete),
               port);
    return serialNumberIn(com::narrow(reply.get()));
}

bool CommandRunner::fail(std::string_view message, std::initializer_list<std::string_view> parts) {
    owner_.report(message, parts);
    return false;
}

}  // namespace kel::script
