#pragma once
// The instrument link as a double: one log of all calls, scripted answers, a hook inside each call.

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "com/text.h"
#include "interfaces/KelUtils.h"

namespace kel::test {

class FakeLink {
public:
    FakeLink();

    // What was called, in order, with its arguments: "Link.SendBreak 300" on the communicator,
    // "Sleep 1" on its port. Fetching the port is not told.
    std::vector<std::string> calls;

    // The same on one line each, without the pause before every script line; control characters are
    // shown as escapes. Empties the log.
    std::string takeWork();

    // Called inside each call that is told, before it is answered. The call fails as it throws.
    std::function<void(const std::string& call)> onCall;

    // Answers of the members that answer true or false, by the name in the log, in turn; true when
    // there are none left. True is sent as 1, which is not VARIANT_TRUE.
    std::map<std::string, std::deque<bool>, std::less<>> answers;

    // What RunCommandFile does and answers instead.
    std::function<HRESULT(BSTR path, VARIANT_BOOL* result)> runFile;

    bool hasPort = true;
    bool isSerial = true;
    bool isSdi12 = false;
    bool isRadio = false;
    long baudRate = 9600;
    long echoWindow = 0;
    bool isIdleProcessing = true;
    std::wstring reply;
    IPreprocessor* preprocessor = nullptr;  // not told
    std::wstring connectionString;
    // Ports by name that are not there, and those that do not open, with the last error.
    std::map<std::wstring, DWORD, std::less<>> absentPorts;
    std::map<std::wstring, DWORD, std::less<>> busyPorts;
    // Network streams connect with this password only.
    std::wstring gatewayPassword;

    // Where it is set, waits find only what stands in it.
    std::optional<std::string> received;

    // What the communicator answers besides its own interface, where there is something.
    com::ComPtr<IUnknown> access;

    IKelCommunicator* communicator() const { return communicator_.Get(); }
    IKelStream* port() const { return port_.Get(); }
    // A network stream that tells what it does here too.
    INetworkStream2* network() const { return network_.Get(); }

private:
    friend class FakeCommunicator;
    friend class FakeStream;
    friend class FakeNetworkStream;
    template <class Derived, class... Interfaces>
    friend class FakeStreamOf;

    // The frame of every member: tells, calls the hook, answers.
    HRESULT call(
        const IID& iid, const std::string& text, std::function<void()> answer = [] {});
    // A member that answers true or false.
    HRESULT ask(const IID& interfaceId, const std::string& name, const std::string& arguments,
                VARIANT_BOOL* result);
    VARIANT_BOOL nextAnswer(const std::string& name);

    com::ComPtr<IKelCommunicator> communicator_;
    com::ComPtr<IKelStream> port_;
    com::ComPtr<INetworkStream2> network_;
};

}  // namespace kel::test
