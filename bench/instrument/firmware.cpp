#include "bench/instrument/firmware.h"

#include "bench/checksum.h"
#include "bench/instrument/instrument_setup.h"

namespace kel::bench {

namespace {

void requireInside(std::size_t address, std::size_t count) {
    if (address > Firmware::kSize || count > Firmware::kSize - address) {
        throw CommandError("beyond the end of the memory");
    }
}

}  // namespace

Firmware::Firmware(long code, std::optional<std::size_t> badCell)
    : code_(code),
      badCell_(badCell),
      banks_{std::string(kSize, '\xFF'), std::string(kSize, '\xFF')} {}

void Firmware::begin(Bank bank, long code) {
    if (code != code_) throw CommandError("wrong access code");
    banks_[bank].assign(kSize, '\xFF');
    loading_ = bank;
    checksum_ = 0;
    complete_ = false;
}

void Firmware::write(std::size_t address, std::string_view bytes) {
    if (!loading_) throw CommandError("nothing is being loaded");
    requireInside(address, bytes.size());
    auto& bank = banks_[*loading_];
    bank.replace(address, bytes.size(), bytes);
    checksum_ = crc32(bytes, checksum_);
    if (badCell_ && *badCell_ >= address && *badCell_ - address < bytes.size()) {
        bank[*badCell_] = static_cast<char>(bank[*badCell_] ^ 1);
    }
}

void Firmware::end(std::uint32_t checksum) {
    if (!loading_) throw CommandError("nothing is being loaded");
    loading_.reset();
    if (checksum != checksum_) throw CommandError("wrong checksum");
    complete_ = true;
}

std::string_view Firmware::read(Bank bank, std::size_t address, std::size_t count) const {
    requireInside(address, count);
    return std::string_view(banks_[bank]).substr(address, count);
}

}  // namespace kel::bench
