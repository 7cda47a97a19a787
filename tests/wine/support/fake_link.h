#pragma once
// The instrument link as a double with scripted answers, behind the trace link, which tells its log
// what is called and fails on demand.

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "tests/wine/support/call_log.h"

namespace kel::test {

class FakeLink : public CallLog {
public:
    FakeLink() : FakeLink(*this, "") {}
    // Its calls stand in the log of another one, with something before them.
    FakeLink(CallLog& log, const std::string& prefix);

    // Answers of the members that answer true or false, by the name in the log, in turn; true when
    // there are none left. True is sent as 1, which is not VARIANT_TRUE.
    std::map<std::string, std::deque<bool>, std::less<>> answers;

    bool hasPort = true;
    bool isNetwork = false;  // the port is network()
    bool isSdi12 = false;
    bool isRadio = false;
    long baudRate = 9600;
    long echoWindow = 0;
    bool isIdleProcessing = true;
    std::wstring reply;
    IPreprocessor* preprocessor = nullptr;
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

    // The communicator itself, of which `access` may be a part.
    IUnknown* innerCommunicator() const { return innerCommunicator_.Get(); }

    // What tests hand out: the traced objects.
    IKelCommunicator* communicator() const { return communicator_.Get(); }
    IKelStream* port() const { return port_.Get(); }
    INetworkStream2* network() const { return network_.Get(); }

    // The window that the link shows its texts in, as a host knows it.
    long shownIn();

    // Gives the next answer of a member.
    HRESULT answer(const char* name, VARIANT_BOOL* result);

private:
    friend class FakeCommunicator;

    const com::ComPtr<IKelStream> innerPort_;
    const com::ComPtr<IKelStream> innerNetwork_;
    const com::ComPtr<IUnknown> innerCommunicator_;
    const com::ComPtr<IKelCommunicator> communicator_;
    const com::ComPtr<IKelStream> port_;
    const com::ComPtr<INetworkStream2> network_;
};

}  // namespace kel::test
