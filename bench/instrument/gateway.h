#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace kel::bench {

// What a gateway does once it has heard the client, instead of letting it in.
enum class GatewayFault { kNone, kRefuse, kHang, kDrop };

struct GatewayOptions {
    std::string password;  // empty: none wanted, any is taken
    GatewayFault fault = GatewayFault::kNone;
};

// The network gateway in front of an instrument, for one client and as a model: it does no input or
// output. The client speaks first, a line "KELGATE password", and gets one line: "READY", after
// which all bytes are the instrument's, "PASSWORD" when it is to come back with another one, or
// "REFUSED", also when its line is none of these or longer than 512 bytes. Lines end in CR LF; what
// comes in may end in a line feed alone.
class Gateway {
public:
    explicit Gateway(GatewayOptions options) : options_(std::move(options)) {}

    enum class Then { kWait, kPassOn, kClose };

    struct Reply {
        Then then = Then::kWait;
        std::string answer;    // for the client, before anything else
        std::string passedOn;  // for the instrument
    };

    // What came from the client. Not called any more after a reply that does not wait.
    Reply feed(std::string_view bytes);

private:
    Reply answerTo(std::string_view line) const;

    GatewayOptions options_;
    std::string line_;
};

}  // namespace kel::bench
