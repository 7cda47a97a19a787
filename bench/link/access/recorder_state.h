#pragma once
// What all access objects of one link know of the recorder.

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "bench/link/model/card_listing.h"

namespace kel::bench {

// Any thread.
class RecorderState {
public:
    // Somebody talks with the instrument; nobody else may.
    std::atomic<bool> isTalking = false;
    // A download or format runs.
    std::atomic<bool> isRunning = false;
    std::atomic<bool> isAborted = false;

    // What was heard last.
    std::optional<CardStatus> status() const {
        const std::lock_guard lock(mutex_);
        return status_;
    }
    void setStatus(const CardStatus& status) {
        const std::lock_guard lock(mutex_);
        status_ = status;
    }
    std::vector<CardEntry> listing() const {
        const std::lock_guard lock(mutex_);
        return listing_;
    }
    bool lists(const std::string& name) const {
        const std::lock_guard lock(mutex_);
        return names_.contains(name);
    }
    void setListing(const std::vector<CardEntry>& listing) {
        const std::lock_guard lock(mutex_);
        listing_ = listing;
        names_.clear();
        for (const CardEntry& entry : listing)
            names_.insert(entry.name);
    }

private:
    mutable std::mutex mutex_;
    std::optional<CardStatus> status_;
    std::vector<CardEntry> listing_;
    std::unordered_set<std::string> names_;
};

}  // namespace kel::bench
