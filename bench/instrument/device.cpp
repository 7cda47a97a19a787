#include "bench/instrument/device.h"

#include <cmath>
#include <utility>

#include "bench/instrument/text.h"

namespace kel::bench {

Device::Device(DeviceOptions options)
    : serialNumber_(std::move(options.serialNumber)),
      clockAtZero_(options.clock),
      setup_(options.setup),
      savedSetup_(std::move(options.setup)),
      store_(std::move(options.store)),
      card_(options.card),
      firmware_(options.accessCode, options.badCell),
      sensors_(options.sensors) {}

std::chrono::local_seconds Device::clock(Duration now) const {
    return clockAtZero_ + std::chrono::floor<std::chrono::seconds>(now);
}

void Device::setClock(std::chrono::local_seconds moment, Duration now) {
    refuseWhileDeployed();
    clockAtZero_ = moment - std::chrono::floor<std::chrono::seconds>(now);
}

void Device::change(std::string_view name, std::string_view value) {
    refuseWhileDeployed();
    setup_.set(name, value);
}

void Device::replaceSetup(InstrumentSetup setup) {
    refuseWhileDeployed();
    setup_ = std::move(setup);
}

void Device::saveSetup() {
    if (store_ && !store_(setup_)) throw CommandError("the setup could not be saved");
    savedSetup_ = setup_;
}

void Device::deploy(Duration now) {
    refuseWhileDeployed();
    const double interval = setup_.number("interval");
    const double samples = setup_.number("burst");
    const double needed = samples > 0 ? samples / setup_.number("rate") : setup_.number("average");
    if (needed > interval) {
        throw CommandError(samples > 0 ? "a burst is longer than the interval"
                                       : "the average is longer than the interval");
    }
    const auto start = parseMoment(setup_.get("start"));
    if (start && *start < clock(now)) throw CommandError("the start has passed");
    deployment_ = Deployment{start.value_or(clock(now)),
                             std::chrono::seconds{static_cast<long long>(interval)},
                             setup_.get("recorder") == "on"};
}

void Device::halt(Duration now) {
    if (!deployed()) throw CommandError("not deployed");
    earlierRecords_ += recordsOfDeployment(now);
    deployment_.reset();
}

long long Device::records(Duration now) const {
    return earlierRecords_ + recordsOfDeployment(now);
}

void Device::eraseRecords() {
    refuseWhileDeployed();
    earlierRecords_ = 0;
}

Reading Device::read(Duration now) const {
    // At rest on a bench: every value wanders a little around its mean, each at its own pace.
    const double seconds = std::chrono::duration<double>(now).count();
    const double heading = 123.4 + 0.3 * std::sin(seconds / 5) + setup_.number("declination") + 360;
    return {10.132 + 0.02 * std::sin(seconds / 3) + setup_.number("pressoffset"),
            std::fmod(heading, 360), 1.5 + 0.2 * std::sin(seconds / 7),
            -0.8 + 0.2 * std::sin(seconds / 11)};
}

void Device::refuseWhileDeployed() const {
    if (deployed()) throw CommandError("deployed, halt first");
}

long long Device::recordsOfDeployment(Duration now) const {
    if (!deployment_ || !deployment_->recording) return 0;
    const auto elapsed = clock(now) - deployment_->start;
    return elapsed.count() < 0 ? 0 : elapsed / deployment_->interval;
}

}  // namespace kel::bench
