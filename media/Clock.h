// The node's sense of time, in microseconds. The live node reads the monotonic system clock;
// an offline conversion drives a manual clock from the position in the file.
#pragma once

#include <atomic>
#include <cstdint>

namespace vocato::media {

class Clock {
public:
    virtual ~Clock() = default;
    // Any thread.
    virtual int64_t NowMicros() const noexcept = 0;
};

class SystemClock final : public Clock {
public:
    int64_t NowMicros() const noexcept override;
};

class ManualClock final : public Clock {
public:
    explicit ManualClock(int64_t start = 0) noexcept : now_(start) {}
    int64_t NowMicros() const noexcept override { return now_.load(std::memory_order_relaxed); }
    // Any thread.
    void Set(int64_t micros) noexcept { now_.store(micros, std::memory_order_relaxed); }

private:
    std::atomic<int64_t> now_;
};

} // namespace vocato::media
