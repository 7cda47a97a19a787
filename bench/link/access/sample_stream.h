#pragma once
// Measured values that the instrument sends line by line until it is told to stop.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/link/access/quiet_port.h"

namespace kel::bench {

// Has the port's bytes from its start to its end. Failures throw com::Error; the stream has then
// ended.
class SampleStream {
public:
    explicit SampleStream(const HomeThread& home) : home_(home) {}
    // The instrument is told to stop, but not waited for.
    ~SampleStream();
    SampleStream(const SampleStream&) = delete;
    SampleStream& operator=(const SampleStream&) = delete;

    // False when the instrument refuses.
    bool start(IKelCommunicator* link, std::string_view command);

    // False also after the instrument itself has ended it.
    bool isRunning() const { return port_.has_value(); }

    // The lines that have come.
    std::vector<std::string> take();

    // Waits for the end. The last lines may still be taken.
    void stop();

private:
    void split();

    const HomeThread& home_;
    std::optional<QuietPort> port_;
    std::string text_;
    std::vector<std::string> lines_;
};

}  // namespace kel::bench
