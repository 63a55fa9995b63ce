// The node's timed events: parameter changes and control requests that any thread may post
// and that the thread running the node applies, in time order, when they fall due.
#pragma once

#include "BoundedQueue.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace vocato::media {

enum class EventType : int32_t { Parameter, DataStatus };

struct TimedEvent {
    int64_t time = 0; // microseconds on the node's clock
    EventType type = EventType::Parameter;
    int32_t id = 0;        // parameter id, or the data status
    uint8_t value[4] = {}; // the parameter's value bytes, copied at posting time
};

class TimedEventQueue {
public:
    static constexpr size_t kCapacity = 256;

    // Any thread; never blocks. False when the queue is full: the event is dropped and counted.
    bool Push(const TimedEvent& event) noexcept;

    // Node thread only. Takes the earliest event due at `now` (ties in posting order).
    bool PopDue(int64_t now, TimedEvent& out) noexcept;

    // Any thread.
    uint64_t Dropped() const noexcept { return dropped_.load(std::memory_order_relaxed); }

private:
    void Collect() noexcept;

    BoundedQueue<TimedEvent, kCapacity> incoming_;
    // Sorted by time, stable; owned by the node thread.
    std::array<TimedEvent, kCapacity> pending_{};
    size_t pendingCount_ = 0;
    std::atomic<uint64_t> dropped_{0};
};

} // namespace vocato::media
