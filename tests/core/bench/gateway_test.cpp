#include "bench/instrument/gateway.h"

#include <gtest/gtest.h>

#include <vector>

namespace kel::bench {
namespace {

// What a client gets, what the gateway does then, what the instrument gets.
std::string shownReply(const Gateway::Reply& reply) {
    const char* then[] = {"wait", "pass on", "close"};
    return reply.answer + then[static_cast<int>(reply.then)] + "|" + reply.passedOn;
}

std::string allAtOnce(const GatewayOptions& options, const std::string& bytes) {
    return shownReply(Gateway(options).feed(bytes));
}

// As the line's owner does it: what follows goes past the gateway.
std::string byteByByte(const GatewayOptions& options, const std::string& bytes) {
    Gateway gateway(options);
    Gateway::Reply reply;
    for (const char byte : bytes) {
        if (reply.then == Gateway::Then::kPassOn) reply.passedOn += byte;
        if (reply.then == Gateway::Then::kWait) reply = gateway.feed({&byte, 1});
    }
    return shownReply(reply);
}

TEST(Gateway, AnswersTheFirstLine) {
    const std::string password(512 - sizeof "KELGATE \r\n" + 1, 'x');
    const std::string longest = "KELGATE " + password + "\r\n";
    const std::string tooLong = "KELGATE x" + password + "\r\n";
    using Fault = GatewayFault;
    const struct {
        GatewayOptions options;
        std::string bytes, expected;
    } rows[] = {
        {{"secret", Fault::kNone}, "KELGATE secret\r\n", "READY\r\npass on|"},
        {{"secret", Fault::kNone}, "KELGATE secret\nver\r\n\n", "READY\r\npass on|ver\r\n\n"},
        {{"two words", Fault::kNone}, "KELGATE two words\r\n", "READY\r\npass on|"},
        {{"secret", Fault::kNone}, "KELGATE Secret\r\nver\r", "PASSWORD\r\nclose|"},
        {{"secret", Fault::kNone}, "KELGATE secret \r\n", "PASSWORD\r\nclose|"},
        {{"secret", Fault::kNone}, "KELGATE \r\n", "PASSWORD\r\nclose|"},
        {{"secret", Fault::kNone}, "KELGATE secret\r", "wait|"},
        {{"secret", Fault::kNone}, "KELGATE\r\n", "REFUSED\r\nclose|"},
        {{"secret", Fault::kNone}, "\r\nKELGATE secret\r\n", "REFUSED\r\nclose|"},
        {{"", Fault::kNone}, "KELGATE any\r\n", "READY\r\npass on|"},
        {{"", Fault::kNone}, "KELGATE \r\n>", "READY\r\npass on|>"},
        {{password, Fault::kNone}, longest + "ver", "READY\r\npass on|ver"},
        {{"x" + password, Fault::kNone}, tooLong, "REFUSED\r\nclose|"},
        {{"", Fault::kNone}, std::string(512, 'x'), "REFUSED\r\nclose|"},
        {{"", Fault::kNone}, std::string(511, 'x'), "wait|"},
        {{"", Fault::kRefuse}, "KELGATE \r\n", "REFUSED\r\nclose|"},
        {{"", Fault::kDrop}, "KELGATE \r\n", "close|"},
        {{"", Fault::kHang}, "KELGATE \r\n" + tooLong + tooLong, "wait|"},
    };
    for (const auto& [options, bytes, expected] : rows) {
        EXPECT_EQ(allAtOnce(options, bytes), expected) << bytes;
        EXPECT_EQ(byteByByte(options, bytes), expected) << bytes;
    }
}

}  // namespace
}  // namespace kel::bench
