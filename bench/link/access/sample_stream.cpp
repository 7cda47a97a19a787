#include "bench/link/access/sample_stream.h"

#include <utility>

#include "bench/link/access/dialogue.h"

namespace kel::bench {
namespace {

constexpr std::string_view kSampleEnd = "\r\n";
constexpr std::string_view kStop = "\r";

// Gives the port up when a step fails.
template <class Step>
void step(std::optional<QuietPort>& port, Step&& work) {
    try {
        work(*port);
    } catch (...) {
        port.reset();
        throw;
    }
}

}  // namespace

SampleStream::~SampleStream() {
    if (!port_) return;
    try {
        port_->write(kStop);
    } catch (const com::Error&) {
        // Nobody is there to be stopped.
    }
}

bool SampleStream::start(IKelCommunicator* link, std::string_view command) {
    lines_.clear();
    text_.clear();
    port_.emplace(link, home_);
    std::optional<std::string> first;
    step(port_, [&](QuietPort& port) { first = Dialogue(port).beginStream(command); });
    if (!first) {
        port_.reset();
        return false;
    }
    text_ = *first;
    return true;
}

std::vector<std::string> SampleStream::take() {
    if (port_) {
        step(port_, [&](QuietPort& port) { text_ += port.take(); });
        split();
    }
    return std::exchange(lines_, {});
}

void SampleStream::stop() {
    if (!port_) return;
    step(port_, [&](QuietPort& port) {
        port.write(kStop);
        text_ += Dialogue(port).finish();
    });
    split();
    port_.reset();
}

// A prompt that follows the lines tells that the instrument sends no more.
void SampleStream::split() {
    std::size_t start = 0;
    for (std::size_t end; (end = text_.find(kSampleEnd, start)) != text_.npos;) {
        lines_.push_back(text_.substr(start, end - start));
        start = end + kSampleEnd.size();
    }
    text_.erase(0, start);
    if (text_ == ">") port_.reset();
}

}  // namespace kel::bench
