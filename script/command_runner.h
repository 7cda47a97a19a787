#pragma once
// The built-in words of the script language: nine directives that act on the instrument link and
// three functions that yield text.

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "com/text.h"
#include "interfaces/KelUtils.h"
#include "script/engine/clock.h"
#include "script/interviewer.h"
#include "script/run_state.h"

namespace kel::script {

// The reply to "sernum" reduced to the serial number: what stands between the last colon and the
// last full stop after it. Nothing when the reply has no colon.
std::optional<std::string> serialNumberIn(std::string_view reply);

class CommandRunner {
public:
    // What the words need of their preprocessor; all must outlive the runner.
    struct Owner {
        RunState& state;
        Interviewer& interviewer;
        Clock& clock;
        const com::Bstr& scriptPath;
        const com::Bstr& systemPath;
        ErrorReport report;
    };

    struct Word {
        const wchar_t* name;
        int code;
    };
    static const std::initializer_list<Word> kDirectives;
    static const std::initializer_list<Word> kFunctions;

    explicit CommandRunner(Owner owner) : owner_(std::move(owner)) {}

    // What a directive answers: an unknown code is not handled. A result of false stops the script.
    // Throws when a call on the link fails.
    struct Outcome {
        bool handled = true;
        bool result = true;
        HRESULT code = S_OK;
    };
    Outcome runDirective(IKelCommunicator* communicator, long code, IFlatCollection* parameters);

    // The same for a function. `value` is left empty when the function fails.
    Outcome runFunction(IKelCommunicator* communicator, long code, std::string& value);

private:
    using Link = com::ComPtr<IKelCommunicator>;
    class Parameters;

    bool wait(const Link& link, const Parameters& parameters);
    bool waitFor(const Link& link, const Parameters& parameters, std::wstring_view text,
                 std::string_view failure);
    bool sendBreak(const Link& link);
    bool wakeUp(const Link& link);
    bool messageBox(const Parameters& parameters);
    bool setBaudRate(const Link& link, const Parameters& parameters);
    Outcome runScript(const Link& link, const Parameters& parameters);
    bool setLine(const Link& link, const Parameters& parameters);
    std::optional<std::string> serialNumber(const Link& link);

    bool fail(std::string_view message, std::initializer_list<std::string_view> parts = {});

    Owner owner_;
};

}  // namespace kel::script
