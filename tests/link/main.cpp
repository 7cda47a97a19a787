// Checks any instrument link by the rules that the components rely on.
#include <winsock2.h>

#include <cstdio>
#include <cwchar>
#include <vector>

#include "com/module.h"
#include "tests/link/check.h"

namespace {

using namespace kel;

constexpr int kWrongUsage = 2;

constexpr char kHelp[] =
    R"(kel_link_conformance: checks an instrument link, a line for each rule

usage: kel_link_conformance PROGID [options]

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

Each line is a rule and its verdict: ok, MEND (what was expected, what happened), or not tried
(why). A link that ends the program shows by the rule without a verdict.
Exit status: 0 nothing is to be mended, 1 something is, 2 bad command line or no such PROGID.
)";

struct UsageError {
    std::string text;
};

conformance::Setup parse(const std::vector<std::wstring>& arguments) {
    conformance::Setup setup;
    std::wstring program;
    std::size_t at = 0;
    const auto next = [&] {
        if (at == arguments.size()) throw UsageError{"a value is missing at the end"};
        return arguments[at++];
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
            throw UsageError{"unknown argument " + com::narrow(word)};
        }
    }
    if (program.empty()) throw UsageError{"the ProgID of a communicator is missing"};
    if (setup.baudRate <= 0) throw UsageError{"a rate is a number above zero"};
    if (FAILED(CLSIDFromProgID(program.c_str(), &setup.communicator))) {
        throw UsageError{com::narrow(program) + " is not registered"};
    }
    return setup;
}

int run(const std::vector<std::wstring>& arguments) {
    try {
        const auto setup = parse(arguments);
        const int toMend = conformance::checkAll(setup, [](const std::string& text) {
            std::fputs(text.c_str(), stdout);
            std::fflush(stdout);
        });
        return toMend > 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "kel_link_conformance: %s (--help shows the options)\n",
                     error.text.c_str());
        return kWrongUsage;
    }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::vector<std::wstring> texts(arguments + 1, arguments + count);
    if (!texts.empty() && texts[0] == L"--help") return std::fputs(kHelp, stdout) < 0;
    WSADATA sockets;
    if (FAILED(OleInitialize(nullptr)) || WSAStartup(MAKEWORD(2, 2), &sockets) != 0) return 70;
    com::attachModule(GetModuleHandleW(nullptr));
    const int code = run(texts);
    com::detachModule();
    WSACleanup();
    OleUninitialize();
    return code;
}
