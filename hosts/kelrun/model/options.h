#pragma once
// The command line. Texts are UTF-8.

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "hosts/shared/model/named_text.h"
#include "hosts/shared/model/target.h"

namespace kel::kelrun {

// The program is one of the hosts.
using namespace host;

struct Options {
    std::string script;
    Target target;
    bool last = false;        // to the same instrument as the last time
    std::string application;  // whose last time; empty for kelrun's own
    std::string link = "BenchLink.Communicator";
    std::vector<NamedText> variables;
    std::vector<NamedText> answers;
    std::string hostScript;              // path; empty for none
    std::vector<std::string> arguments;  // of the host script
    std::optional<std::string> scriptPath;
    std::string systemPath;
    std::string transcript;  // path; empty for none
    std::string report;      // path; empty for none
    std::string record;      // path; empty for none
    std::string replay;      // path; empty for none
    double speed = 1;        // of a replay; 0 for without waiting
    bool check = false;      // nothing is run
    bool json = false;       // of a check
    bool diagnose = false;   // nothing is run, there is no script
    bool keepGoing = false;
    bool interactive = false;
    bool printVariables = false;
    bool quiet = false;
    bool help = false;     // nothing else counts
    bool version = false;  // nothing else counts

    // False when the script is to run without an instrument.
    bool hasInstrument() const { return last || !target.port.empty() || !target.tcp.empty(); }
};

// Reads the arguments that follow the program's name. Throws Failure (usage).
Options parseOptions(std::span<const std::string> arguments);

// What a run is connected to, in words.
std::string connectionText(const Options& options);

// What --help prints; fits a screen of 24 lines of 80 characters.
std::string helpText();

}  // namespace kel::kelrun
