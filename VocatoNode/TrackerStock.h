// Trackers built ahead of time, so that a preset change on the audio thread can swap in a
// fresh engine without allocating, and trackers taken out of service, to be freed elsewhere.
#pragma once

#include "PitchTracker.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>

namespace vocato {

using TrackerFactory = std::function<std::unique_ptr<PitchTracker>()>;

class TrackerStock {
public:
    static constexpr size_t kSpares = 4;

    explicit TrackerStock(TrackerFactory factory);
    ~TrackerStock();
    TrackerStock(const TrackerStock&) = delete;
    TrackerStock& operator=(const TrackerStock&) = delete;

    // Any thread but the audio thread. Frees the retired trackers and builds spares.
    void Maintain();

    // Audio thread. A fresh tracker in its default state, or null when none is ready.
    PitchTracker* Take() noexcept;

    // Audio thread. Hands a tracker over to be freed by Maintain; null is ignored.
    void Retire(PitchTracker* tracker) noexcept;

private:
    TrackerFactory factory_;
    std::mutex maintaining_;
    std::atomic<PitchTracker*> spares_[kSpares] = {};
    // Every retire follows a take, and at most kSpares takes happen between two Maintain
    // calls, so twice as many slots never run out.
    std::atomic<PitchTracker*> retired_[2 * kSpares] = {};
};

// The single place where a tracker kind becomes a way to build trackers; empty for a value
// outside the enumeration.
TrackerFactory TrackerFactoryFor(TrackerKind kind);

} // namespace vocato
