#include "dialogs/service/model/transfer_progress.h"

#include <algorithm>
#include <utility>

namespace kel::service {
namespace {

// An estimate from less than that is a guess.
constexpr std::chrono::seconds kLeastBasis{1};

std::wstring minutesAndSeconds(std::chrono::seconds time) {
    const std::wstring seconds = std::to_wstring(time.count() % 60);
    return std::to_wstring(time.count() / 60) + (seconds.size() < 2 ? L":0" : L":") + seconds;
}

}  // namespace

void TransferProgress::begin(std::wstring text) {
    *this = {};
    text_ = std::move(text);
}

void TransferProgress::tell(std::wstring text) {
    told_ = std::move(text);
    refusal_.clear();
}

void TransferProgress::advance(std::int64_t done, std::int64_t total, Time now) {
    total = std::max<std::int64_t>(total, 0);
    done = std::clamp<std::int64_t>(done, 0, total);
    if (done < done_ || total != total_) {
        firstDone_ = done;
        firstTime_ = now;
    }
    done_ = done;
    total_ = total;
    position_ = total == 0 ? 0 : static_cast<int>(done * kWhole / total);
    remaining_.reset();
    const Time elapsed = now - firstTime_;
    if (elapsed < kLeastBasis || done == firstDone_ || done == total) return;
    const Time left = elapsed * (total - done) / (done - firstDone_);
    remaining_ = std::max(std::chrono::ceil<std::chrono::seconds>(left), std::chrono::seconds(1));
}

std::wstring TransferProgress::line() const {
    const std::wstring& text = !refusal_.empty() ? refusal_ : !told_.empty() ? told_ : text_;
    return remaining_ ? text + L", " + minutesAndSeconds(*remaining_) + L" remaining" : text;
}

std::wstring TransferProgress::lastLine(const std::wstring& failure) const {
    return told_.empty() ? failure : failure + L": " + told_;
}

}  // namespace kel::service
