#include "hosts/kelrun/model/options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "hosts/shared/model/address.h"
#include "hosts/shared/model/failure.h"

namespace kel::kelrun {
namespace {

using Arguments = std::vector<std::string>;

// What the user reads when a call fails, with the exit code before it; empty when it does not.
template <class Call>
std::string failureOf(Call&& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return std::to_string(static_cast<int>(failure.code())) + " " + failure.what();
    }
    return {};
}

Arguments split(const std::string& line) {
    std::istringstream words(line);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(KelrunOptions, ReadsEveryOption) {
    const auto options = parseOptions(
        split("--port COM3 --baud=115200 a.kel --link Some.Link --var a=1 --var=b=x=y --answer q= "
              "--script-path C:\\s --system-path D:\\ --transcript t --record r --speed 0.5 "
              "--check --json --keep-going --interactive --print-variables --quiet"));
    EXPECT_EQ(options.script, "a.kel");
    EXPECT_EQ(options.target.port, "COM3");
    EXPECT_EQ(options.target.baudRate, 115200);
    EXPECT_EQ(options.link, "Some.Link");
    ASSERT_EQ(options.variables.size(), 2u);
    EXPECT_EQ(options.variables[1].name, "b");
    EXPECT_EQ(options.variables[1].value, "x=y");
    EXPECT_EQ(options.scriptPath, "C:\\s");
    EXPECT_EQ(options.systemPath, "D:\\");
    ASSERT_EQ(options.answers.size(), 1u);
    EXPECT_EQ(options.answers[0].name + options.answers[0].value, "q");
    EXPECT_EQ(options.transcript + options.record, "tr");
    EXPECT_EQ(options.speed, 0.5);
    EXPECT_TRUE(options.check && options.json && options.keepGoing && options.interactive);
    EXPECT_TRUE(options.printVariables && options.quiet);
    EXPECT_EQ(parseOptions(Arguments{"--tcp", "h:1", "--", "-odd.kel"}).script, "-odd.kel");
    const auto hosted = parseOptions(Arguments{"--host", "h.js", "--", "-odd.kel", "--x", ""});
    EXPECT_EQ(hosted.hostScript + hosted.script, "h.js-odd.kel");
    EXPECT_EQ(hosted.arguments, (Arguments{"--x", ""}));
    EXPECT_TRUE(parseOptions(Arguments{"a.kel", "--help", "--nonsense"}).help);
    EXPECT_TRUE(parseOptions(split("--diagnose --link L --port COM3")).diagnose);
}

TEST(KelrunOptions, RefusesWrongUsageWithItsReason) {
    const struct {
        Arguments arguments;
        const char* reason;
    } cases[] = {
        {{}, "2 which script?"},
        {{""}, "2 the script's name is empty"},
        {{"a", "b"}, "2 one script at a time: 'a' or 'b'"},
        {{"a", "--prot", "COM3"}, "2 there is no option --prot"},
        {{"a", "-h"}, "2 there is no option -h"},
        {{"a", "--port"}, "2 --port needs a value: NAME"},
        {{"a", "--port", "--quiet"}, "2 --port needs a value: NAME"},
        {{"a", "--port="}, "2 --port needs a value: NAME"},
        {{"a", "--quiet=yes"}, "2 --quiet takes no value"},
        {{"a", "--port", "1", "--port", "2"}, "2 --port is given twice"},
        {{"a", "--port", "COM3", "--tcp", "h:1"}, "2 --port and --tcp exclude each other"},
        {{"a", "--baud", "96x"}, "2 --baud: '96x' is no rate"},
        {{"a", "--baud", "0"}, "2 --baud: '0' is no rate"},
        {{"a", "--baud", "99999999999"}, "2 --baud: '99999999999' is no rate"},
        {{"a", "--var", "name"}, "2 --var: 'name' is not NAME=VALUE"},
        {{"a", "--answer", "=ok"}, "2 --answer: '=ok' is not NAME=VALUE"},
        {{"a", "--speed", "-1"}, "2 --speed: '-1' is no speed"},
        {{"a", "--speed", "nan"}, "2 --speed: 'nan' is no speed"},
        {{"a", "--record", "f", "--replay", "f"}, "2 --record and --replay exclude each other"},
        {{"a", "--last", "--tcp", "h:1"}, "2 --last and a connection exclude each other"},
        {{"a", "--last", "--record", "f"},
         "2 --last does not go with --record and --replay: name the connection"},
        {{"a", "--app", "x"}, "2 --app goes with --last"},
        {{"a", "--", "b"}, "2 'b' is for a host script: --host"},
        {{"a", "--json"}, "2 --json goes with --check"},
        {{"a", "--diagnose"}, "2 --diagnose runs no script"},
    };
    for (const auto& row : cases) {
        const std::string failure = failureOf([&] { parseOptions(row.arguments); });
        EXPECT_EQ(failure, std::string(row.reason) + " (--help shows the options)");
    }
}

TEST(KelrunOptions, HelpFitsAScreenAndNamesEveryExitCode) {
    const std::string help = helpText();
    EXPECT_LE(std::ranges::count(help, '\n'), 24);
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LT(line.size(), 80u) << line;
    for (const char* code : {"codes: 0 ", "1 it failed", "2 wrong", "3 no", "4 cancelled", "5 a "})
        EXPECT_NE(help.find(code), std::string::npos) << code;
}

TEST(KelrunAddress, TakesHostAndPortApart) {
    EXPECT_EQ(parseAddress("gate.example:4001").host, "gate.example");
    EXPECT_EQ(parseAddress("10.0.0.1:65535").port, "65535");
    EXPECT_EQ(parseAddress("gate:10.0.0.1:4001").host, "gate:10.0.0.1");
    EXPECT_EQ(parseAddress("[fe80::1]:1").host, "fe80::1");
    for (const char* text : {"", "host", "host:", ":1", "host:0", "host:65536", "host:x", "host:-1",
                             "::1:80", "[]:1", "a b:1"}) {
        EXPECT_EQ(
            failureOf([&] { parseAddress(text); }),
            "3 no connection: '" + std::string(text) + "' is not HOST:PORT (port 1 to 65535)");
    }
}

}  // namespace
}  // namespace kel::kelrun
