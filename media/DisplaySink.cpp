#include "DisplaySink.h"

#include <algorithm>

namespace vocato::media {

void OscilloscopeArea::Write(const int16_t* samples, size_t count) noexcept {
    count = std::min(count, kSamples);
    const uint32_t seq = sequence_.load(std::memory_order_relaxed);
    sequence_.store(seq + 1, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    for (size_t i = 0; i < count; ++i) {
        samples_[i].store(samples[i], std::memory_order_relaxed);
    }
    sequence_.store(seq + 2, std::memory_order_release);
}

bool OscilloscopeArea::Read(int16_t (&out)[kSamples]) const noexcept {
    if (!Attached()) {
        return false;
    }
    for (;;) {
        const uint32_t before = sequence_.load(std::memory_order_acquire);
        if (before & 1u) {
            continue;
        }
        for (size_t i = 0; i < kSamples; ++i) {
            out[i] = samples_[i].load(std::memory_order_relaxed);
        }
        std::atomic_thread_fence(std::memory_order_acquire);
        if (sequence_.load(std::memory_order_relaxed) == before) {
            return true;
        }
    }
}

} // namespace vocato::media
