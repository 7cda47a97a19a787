#pragma once
// The instrument as the desk has it: link, connection and preprocessor.

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "com/error.h"
#include "hosts/shared/connection.h"
#include "hosts/shared/diagnostics.h"
#include "hosts/shared/script_events.h"
#include "interfaces/KelUtils.h"

namespace kel::keldesk {

// Link and preprocessor refer to each other: they are parted at the end.
class Instrument {
public:
    // `owner` owns the windows of scripts. Throws host::Failure (not registered), com::Error.
    Instrument(const std::string& link, HWND owner, host::ScriptEvents::Listener listener);
    ~Instrument();
    Instrument(const Instrument&) = delete;
    Instrument& operator=(const Instrument&) = delete;

    const com::ComPtr<IKelCommunicator>& link() const { return link_; }

    // The connection of before stays when the new one fails. Throws host::Failure, com::Error.
    void connect(const host::Target& target);
    // Takes what a dialog has connected the link with, or nothing. Throws com::Error.
    void adopt();
    // Makes a new connection ready for scripts and goes on with the log, which is given up where it
    // does not open. Throws com::Error.
    void prepare();
    void disconnect();
    bool isConnected() const { return stream_ != nullptr; }
    // "COM3, 9600 baud", or a network address; empty without a connection.
    std::wstring connection() const;
    // False when the stream has been closed from elsewhere.
    bool isAlive() const;

    // What arrives is appended to a file; to none for an empty path. Throws com::Error.
    void setLogFile(const std::wstring& path);
    const std::wstring& logFile() const { return logFile_; }

    // Runs a script to its end, while the thread's messages are dispatched; false when it stopped.
    // Throws com::Error.
    bool run(const std::wstring& name, std::wstring_view folder, std::wstring_view text);
    void cancel();
    bool isRunning() const { return isRunning_; }
    bool wasCancelled() const;

    // What is wrong with a script; what went wrong in the last run; all variables of now.
    std::vector<host::Diagnostic> check(const std::wstring& name, std::wstring_view text) const;
    std::vector<host::Diagnostic> lastRun() const;
    std::vector<host::NamedText> variables() const;

private:
    com::ComPtr<IPreprocessorControl> preprocessor_;
    com::ComPtr<IKelCommunicator> link_;
    host::ScriptEvents events_;
    com::ComPtr<IKelStream> stream_;
    std::wstring logFile_;
    bool isRunning_ = false;
};

}  // namespace kel::keldesk
