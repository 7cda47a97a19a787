#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kel::bench {

// The instrument's program memory: two banks, for the firmware and for what goes with it. A bank is
// loaded piece by piece between begin and end; what is refused throws CommandError.
class Firmware {
public:
    enum Bank { kMain, kCompanion };
    static constexpr std::size_t kSize = 256 * 1024;

    // `code` is asked for before a bank is loaded. The cell `badCell` of both banks keeps no byte
    // as it was written.
    explicit Firmware(long code = 0, std::optional<std::size_t> badCell = {});

    // Erases a bank, whose bytes are then FF.
    void begin(Bank bank, long code);
    void write(std::size_t address, std::string_view bytes);
    // Checks the sum of all that was written, in its order.
    void end(std::uint32_t checksum);

    // False while a bank is being loaded, and after a loading that has not come to its end.
    bool complete() const { return complete_; }
    std::string_view read(Bank bank, std::size_t address, std::size_t count) const;

private:
    long code_;
    std::optional<std::size_t> badCell_;
    std::array<std::string, 2> banks_;
    std::optional<Bank> loading_;
    std::uint32_t checksum_ = 0;
    bool complete_ = true;
};

}  // namespace kel::bench
