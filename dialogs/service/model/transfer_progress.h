#pragma once
// How far the transfer of a file is, and the line that tells it to the user.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kel::service {

class TransferProgress {
public:
    // Since some fixed moment.
    using Time = std::chrono::milliseconds;

    static constexpr int kWhole = 1000;

    // A step begins; `text` is shown until more is known.
    void begin(std::wstring text);

    // What carries the step out says where it is.
    void tell(std::wstring text);

    // A wish of the user that cannot be granted now; shown until the step says something else.
    void refuse(std::wstring reason) { refusal_ = std::move(reason); }

    // Bytes done and in all. Where there is less done than before, or the whole is another one, the
    // estimate begins anew.
    void advance(std::int64_t done, std::int64_t total, Time now);

    // For a bar: 0 to kWhole.
    int position() const { return position_; }

    // With the time that remains, as far as it can be told.
    std::wstring line() const;

    // What stays when the step has failed: that, and what it said last.
    std::wstring lastLine(const std::wstring& failure) const;

private:
    std::wstring text_;
    std::wstring told_;
    std::wstring refusal_;
    int position_ = 0;
    std::int64_t done_ = 0;
    std::int64_t total_ = 0;
    std::int64_t firstDone_ = 0;
    Time firstTime_{};
    std::optional<std::chrono::seconds> remaining_;
};

}  // namespace kel::service
