// A fixed-capacity multi-producer, multi-consumer queue that never blocks and never allocates
// after construction (Dmitry Vyukov's bounded MPMC queue). A full queue refuses the item; it
// never waits for room, so a real-time thread may push into it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vocato::media {

template <typename T, size_t Capacity> class BoundedQueue {
    static_assert(Capacity >= 2 && (Capacity & (Capacity - 1)) == 0,
                  "the capacity is a power of two so that positions wrap with a mask");
    static_assert(std::is_trivially_copyable_v<T>);

public:
    BoundedQueue() noexcept {
        for (size_t i = 0; i < Capacity; ++i) {
            cells_[i].sequence.store(i, std::memory_order_relaxed);
        }
    }
    BoundedQueue(const BoundedQueue&) = delete;
    BoundedQueue& operator=(const BoundedQueue&) = delete;

    // Any thread. False when the queue is full.
    bool TryPush(const T& value) noexcept {
        size_t pos = enqueuePos_.load(std::memory_order_relaxed);
        for (;;) {
            Cell& cell = cells_[pos & (Capacity - 1)];
            const size_t seq = cell.sequence.load(std::memory_order_acquire);
            const auto diff = static_cast<intptr_t>(seq) - static_cast<intptr_t>(pos);
            if (diff == 0) {
                if (enqueuePos_.compare_exchange_weak(pos, pos + 1, std::memory_order_relaxed)) {
                    cell.value = value;
                    cell.sequence.store(pos + 1, std::memory_order_release);
                    return true;
                }
            } else if (diff < 0) {
                return false;
            } else {
                pos = enqueuePos_.load(std::memory_order_relaxed);
            }
        }
    }

    // Any thread. False when the queue is empty.
    bool TryPop(T& out) noexcept {
        size_t pos = dequeuePos_.load(std::memory_order_relaxed);
        for (;;) {
            Cell& cell = cells_[pos & (Capacity - 1)];
            const size_t seq = cell.sequence.load(std::memory_order_acquire);
            const auto diff = static_cast<intptr_t>(seq) - static_cast<intptr_t>(pos + 1);
            if (diff == 0) {
                if (dequeuePos_.compare_exchange_weak(pos, pos + 1, std::memory_order_relaxed)) {
                    out = cell.value;
                    cell.sequence.store(pos + Capacity, std::memory_order_release);
                    return true;
                }
            } else if (diff < 0) {
                return false;
            } else {
                pos = dequeuePos_.load(std::memory_order_relaxed);
            }
        }
    }

private:
    struct Cell {
        std::atomic<size_t> sequence;
        T value;
    };
    Cell cells_[Capacity];
    alignas(64) std::atomic<size_t> enqueuePos_{0};
    alignas(64) std::atomic<size_t> dequeuePos_{0};
};

} // namespace vocato::media
