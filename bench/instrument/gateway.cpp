#include "bench/instrument/gateway.h"

namespace kel::bench {

namespace {

constexpr std::size_t kLongestGatewayLine = 512;
constexpr std::string_view kGreeting = "KELGATE ";

}  // namespace

Gateway::Reply Gateway::feed(std::string_view bytes) {
    const std::size_t room = kLongestGatewayLine - line_.size();
    const std::size_t end = bytes.substr(0, room).find('\n');
    const bool ends = end != bytes.npos;
    line_ += bytes.substr(0, ends ? end + 1 : room);
    if (!ends && line_.size() < kLongestGatewayLine) return {};

    Reply reply = answerTo(line_);
    if (reply.then == Then::kPassOn) reply.passedOn = bytes.substr(end + 1);
    line_.clear();
    return reply;
}

Gateway::Reply Gateway::answerTo(std::string_view line) const {
    switch (options_.fault) {
        case GatewayFault::kHang:
            return {};
        case GatewayFault::kDrop:
            return {Then::kClose, {}, {}};
        case GatewayFault::kRefuse:
            return {Then::kClose, "REFUSED\r\n", {}};
        case GatewayFault::kNone:
            break;
    }
    if (!line.starts_with(kGreeting) || !line.ends_with('\n')) {
        return {Then::kClose, "REFUSED\r\n", {}};
    }
    std::string_view password = line.substr(kGreeting.size());
    password.remove_suffix(password.ends_with("\r\n") ? 2 : 1);
    if (!options_.password.empty() && password != options_.password) {
        return {Then::kClose, "PASSWORD\r\n", {}};
    }
    return {Then::kPassOn, "READY\r\n", {}};
}

}  // namespace kel::bench
