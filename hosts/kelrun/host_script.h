#pragma once
// A script in JScript that extends and watches runs: --host.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "com/late_bound.h"
#include "hosts/shared/model/diagnostic.h"
#include "hosts/shared/model/failure.h"
#include "interfaces/KelUtils.h"

namespace kel::kelrun {

// Where texts that the script prints go. What it throws is an exception of the script.
using Print = std::function<void(std::wstring_view text)>;

// An error in the outermost code.
class HostScriptFailure : public host::Failure {
public:
    explicit HostScriptFailure(const host::Diagnostic& finding)
        : Failure(host::ExitCode::kFailed, placeAndMessage(finding)), finding_(finding) {}

    const host::Diagnostic& finding() const { return finding_; }

private:
    host::Diagnostic finding_;
};

// Is run once, when this is made; its functions are called later. The first error of one of them
// cancels the run, and none is called any more. All members are called on one thread.
class HostScript {
public:
    // `path` and `arguments` are UTF-8. Throws HostScriptFailure, Failure (unreadable, not
    // registered), com::Error.
    HostScript(const std::string& path, const std::vector<std::string>& arguments,
               const com::ComPtr<IPreprocessorControl>& preprocessor, Print print);
    ~HostScript();
    HostScript(const HostScript&) = delete;
    HostScript& operator=(const HostScript&) = delete;

    // Gives the script the link, until leaveLink(), and another place to print to.
    void reachLink(const com::ComPtr<IKelCommunicator>& link, Print print);
    void leaveLink();

    // What happens, for the functions onRunStarted, onLineStarted, onError and onRunEnded.
    void runStarted();
    void lineStarted(const std::string& file, std::size_t line);
    void errorFound(const std::string& file, std::size_t line, std::size_t column,
                    std::wstring_view message);
    void runEnded(bool succeeded);

    // What went wrong in the script, in a function for words as well; the first error only.
    const std::optional<host::Diagnostic>& error() const { return error_; }

private:
    HostScript(const std::string& path, const com::ComPtr<IPreprocessorControl>& preprocessor,
               Print print);

    using Function = std::optional<com::LateBound>;

    void putObject(const wchar_t* name, IDispatch* object) const;
    void load();
    Function find(const std::wstring& name) const;
    void call(const Function& function, std::initializer_list<com::Variant> arguments);
    // Takes over what the script engine tells of the last error; nothing where there is none.
    void noticeError();

    std::string path_;
    com::ComPtr<IPreprocessorControl> preprocessor_;
    com::ComPtr<IKelScriptObject2> script_;
    com::ComPtr<IKelObjects> objects_;
    com::ComPtr<IPreprocessorExtender> extender_;
    std::shared_ptr<Print> print_;  // shared with the script's object, which it may outlive
    Function onRunStarted_;
    Function onLineStarted_;
    Function onError_;
    Function onRunEnded_;
    std::optional<host::Diagnostic> error_;
};

}  // namespace kel::kelrun
