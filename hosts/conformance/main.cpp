// kel_link_conformance: checks any instrument link by the rules that the components rely on.
#include <winsock2.h>

#include <cstdlib>

#include "com/module.h"
#include "hosts/conformance/check.h"
#include "hosts/shared/console_program.h"
#include "hosts/shared/ole.h"

namespace {

using namespace kel;
using host::ConsoleOutput;
using host::ExitCode;

constexpr char kHelp[] =
    R"(usage: kel_link_conformance PROGID [options]
Checks an instrument link, a line for each rule.

PROGID is that of the link's communicator; its streams are made by the identifiers of
interfaces/link_classes.h. The library has to be registered.

  --serial PORT         opens the serial stream on this port, such as COM3
  --baud RATE           with this rate, 9600 unless given
  --network HOST PORT   connects the network stream there
  --echoing             at the other end stands an instrument that is awake, echoes each byte that
                        it receives, answers a command with OK and the prompt >, an empty line and
                        a command that it does not know with the prompt alone or words before it:
                        the virtual instrument is one. Without it the rules about what arrives are
                        not tried.
  --command TEXT        the command that is answered with OK, "set station 1" unless given
  --help                this text
  --version             the version

Each line is a rule and its verdict: ok, MEND (what was expected, what happened), or not tried
(why). A link that ends the program shows by the rule without a verdict.
Exit status: 0 nothing is to be mended, 1 something is, 2 bad command line or no such PROGID.
)";

[[noreturn]] void refuse(const std::string& text) {
    throw host::Failure(ExitCode::kUsage, text + " (--help shows the options)");
}

conformance::Setup parse(const std::vector<std::string>& arguments) {
    conformance::Setup setup;
    std::wstring program;
    std::size_t at = 0;
    const auto next = [&] {
        if (at == arguments.size()) refuse("a value is missing at the end");
        return com::widen(arguments[at++], CP_UTF8);
    };
    while (at < arguments.size()) {
        const std::wstring word = next();
        if (word == L"--serial") {
            setup.serialPort = next();
        } else if (word == L"--baud") {
            setup.baudRate = std::wcstol(next().c_str(), nullptr, 10);
        } else if (word == L"--network") {
            setup.host = next();
            setup.port = next();
        } else if (word == L"--echoing") {
            setup.echoing = true;
        } else if (word == L"--command") {
            setup.command = next();
        } else if (program.empty() && !word.starts_with(L"-")) {
            program = word;
        } else {
            refuse("unknown argument " + arguments[at - 1]);
        }
    }
    if (program.empty()) refuse("the ProgID of a communicator is missing");
    if (setup.baudRate <= 0) refuse("a rate is a number above zero");
    if (FAILED(CLSIDFromProgID(program.c_str(), &setup.communicator)))
        refuse(com::narrow(std::wstring_view(program), CP_UTF8) + " is not registered");
    return setup;
}

// Sockets, and the module of the objects that links get to see.
class Surroundings {
public:
    Surroundings() {
        WSADATA sockets;
        if (WSAStartup(MAKEWORD(2, 2), &sockets) != 0) throw com::lastError();
        com::attachModule(GetModuleHandleW(nullptr));
    }
    ~Surroundings() {
        com::detachModule();
        WSACleanup();
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

private:
    host::Ole ole_;
};

ExitCode runProgram(const std::vector<std::string>& arguments, ConsoleOutput&) {
    ConsoleOutput output(STD_OUTPUT_HANDLE);
    if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "--version")) {
        output.write(arguments[0] == "--help" ? kHelp : "kel_link_conformance " KEL_VERSION "\n");
        return ExitCode::kRan;
    }
    const Surroundings surroundings;
    const int toMend = conformance::checkAll(parse(arguments), [&](const std::string& text) {
        output.write(com::narrow(std::wstring_view(com::widen(text)), CP_UTF8));
    });
    return toMend > 0 ? ExitCode::kFailed : ExitCode::kRan;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    return host::runConsoleProgram("kel_link_conformance", count, arguments, runProgram);
}
