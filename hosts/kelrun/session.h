#pragma once
// Preprocessor, instrument link and stream, put together for a run and taken apart after it.

#include <string>
#include <string_view>

#include "hosts/kelrun/cancel.h"
#include "hosts/kelrun/connection.h"
#include "hosts/kelrun/console_echo.h"
#include "hosts/kelrun/model/options.h"

namespace kel::kelrun {

// Link and preprocessor refer to each other: the session parts them, on every way out.
class Session {
public:
    // Creates the components and connects. `scriptFolder` is where scripts look for scripts unless
    // the options say otherwise. Throws Failure, com::Error.
    Session(const Options& options, std::wstring_view scriptFolder);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Runs the text of a script; false when it stopped, or was not begun since the user has already
    // cancelled. Variables stay for the next one. Throws com::Error.
    bool run(std::wstring_view script);

    // True when the user or the last script itself asked for the end.
    bool wasCancelled() const;

    // Ends the dialogue on the console. True when all of it was shown.
    bool finishDialogue();

private:
    explicit Session(const Options& options);

    com::ComPtr<IPreprocessorControl> preprocessor_;
    com::ComPtr<IKelCommunicator> communicator_;
    CancelOnInterrupt cancel_;
    ConsoleEcho echo_;
    Connection connection_;
};

}  // namespace kel::kelrun
