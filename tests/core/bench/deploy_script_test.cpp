#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <string_view>

#include "bench/instrument/instrument.h"
#include "bench/instrument/text.h"

namespace kel::bench {
namespace {

using Values = std::map<std::string, std::string, std::less<>>;

constexpr std::string_view kNameCharacters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

const Values kCalls{{"DATE()", "2024/03/09"}, {"TIME()", "12:34:56"}, {"SERIALNUMBER()", "D123"}};

// The line as it would reach the instrument: references and inline calls replaced.
std::string substituted(std::string line, const Values& variables) {
    for (std::size_t at = 0; (at = line.find('%', at)) != std::string::npos;) {
        const auto end = std::min(line.find_first_not_of(kNameCharacters, at + 1), line.size());
        line.replace(at, end - at, variables.at(line.substr(at + 1, end - at - 1)));
    }
    for (std::size_t at = 0; (at = line.find("##", at)) != std::string::npos;) {
        const auto end = line.find(')', at) + 1;
        line.replace(at, end - at, kCalls.at(line.substr(at + 2, end - at - 2)));
    }
    return line;
}

void assign(std::string_view expression, Values& variables) {
    const auto equals = expression.find('=');
    ASSERT_NE(equals, std::string_view::npos) << expression;
    std::string value(expression.substr(equals + 1));
    if (const auto call = kCalls.find(value); call != kCalls.end()) value = call->second;
    std::erase(value, '"');
    variables[std::string(expression.substr(0, equals))] = value;
}

// Both branches of a condition are taken: every command of the script has to be understood.
TEST(ExampleScript, DeployIsUnderstoodByTheInstrument) {
    std::ifstream script(KEL_EXAMPLES_FOLDER "/deploy.kel");
    ASSERT_TRUE(script);
    Instrument instrument({});
    Duration now{0};
    Values variables;
    std::string command;
    std::string answer;
    int awaited = 0;
    for (std::string line; std::getline(script, line);) {
        line = trim(std::string_view(line).substr(0, line.find("//")));
        if (line.starts_with('@')) {
            assign(std::string_view(line).substr(1), variables);
        } else if (line.starts_with("#WAIT_")) {
            const auto expected = line.starts_with("#WAIT_OK") ? "\r\nOK\r\n" : "\r\n>";
            EXPECT_NE(answer.find(expected), std::string::npos) << command << " -> " << answer;
            EXPECT_EQ(answer.find("ERROR"), std::string::npos) << command << " -> " << answer;
            ++awaited;
        } else if (!line.empty() && !line.starts_with('#')) {
            EXPECT_EQ(std::exchange(awaited, 0), command.empty() ? 0 : 1) << command;
            command = substituted(line, variables);
            instrument.feed(command + "\r", now);
            now += std::chrono::seconds{3};
            answer = instrument.take(now);
        }
    }
    EXPECT_TRUE(instrument.asleep());
    instrument.feed({"\0", 1}, now);
    now += std::chrono::seconds{1};
    instrument.feed("status\r", now);
    EXPECT_NE(instrument.take(now).find("Harbour_mouth-D123\r\nState: deployed since 2024/03/09"),
              std::string::npos);
}

}  // namespace
}  // namespace kel::bench
