#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "bench/instrument/card.h"
#include "bench/instrument/firmware.h"
#include "bench/instrument/instrument_setup.h"
#include "bench/instrument/line_output.h"
#include "bench/instrument/sensors.h"

namespace kel::bench {

// Keeps a setup over a power cut; false when that failed.
using SetupStore = std::function<bool(const InstrumentSetup&)>;

// What a device is made with.
struct DeviceOptions {
    std::string serialNumber = "D123";
    // What the instrument's clock shows at time zero.
    std::chrono::local_seconds clock{};
    InstrumentSetup setup;
    SetupStore store;
    CardKind card = CardKind::kUsual;
    long accessCode = 0;                 // of the firmware
    std::optional<std::size_t> badCell;  // of the firmware's memory
    SensorOptions sensors;
};

// What the instrument measures and remembers, without its line. All `now` are the model's time.
class Device {
public:
    explicit Device(DeviceOptions options);

    const std::string& serialNumber() const { return serialNumber_; }

    std::chrono::local_seconds clock(Duration now) const;
    void setClock(std::chrono::local_seconds moment, Duration now);

    // The setup in use; changes are refused with CommandError during a deployment.
    const InstrumentSetup& setup() const { return setup_; }
    void change(std::string_view name, std::string_view value);
    void replaceSetup(InstrumentSetup setup);

    // Keeps the setup in use, or gives back the kept one. Throw CommandError on failure.
    void saveSetup();
    void restoreSetup() { replaceSetup(savedSetup_); }

    // Starts recording as the setup says. Throws CommandError when the setup makes no sense.
    void deploy(Duration now);
    void halt(Duration now);
    bool deployed() const { return deployment_.has_value(); }
    // The moment at which the present deployment records first; only while deployed.
    std::chrono::local_seconds deploymentStart() const { return deployment_->start; }
    // Records in the memory, those of the present deployment included.
    long long records(Duration now) const;
    // Throws CommandError during a deployment.
    void eraseRecords();

    Reading read(Duration now) const;

    // What the services work on.
    Card& card() { return card_; }
    Firmware& firmware() { return firmware_; }
    Sensors& sensors() { return sensors_; }

private:
    struct Deployment {
        std::chrono::local_seconds start;
        std::chrono::seconds interval;
        bool recording;
    };

    void refuseWhileDeployed() const;
    long long recordsOfDeployment(Duration now) const;

    std::string serialNumber_;
    std::chrono::local_seconds clockAtZero_;
    InstrumentSetup setup_;
    InstrumentSetup savedSetup_;
    SetupStore store_;
    std::optional<Deployment> deployment_;
    long long earlierRecords_ = 0;
    Card card_;
    Firmware firmware_;
    Sensors sensors_;
};

}  // namespace kel::bench
