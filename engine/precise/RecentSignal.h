// The recent past of one stream, for measuring its periodicity at a few chosen lags.
//
// The difference banks find a period on a decimated stream, where a short period spans only a
// dozen samples or so and one sample more or less is several per cent. Around that estimate, a
// few lags of the normalised square-difference function at a finer rate, and a parabola
// through the best of them, restore the precision; a filtered copy of the stream answers
// questions the bank cannot (PeriodicityAnalyzer.h).
//
// The stream is kept twice over, the second copy right behind the first, so that any recent
// stretch of it is contiguous and the loops need no wrap-around.
//
// Thread contract: construction allocates (off the audio thread); everything else runs on the
// audio thread and never allocates.
#pragma once

#include <cstdint>
#include <vector>

namespace vocato::precise {

class RecentSignal {
public:
    // Room for the newest `capacity` samples, a power of two.
    explicit RecentSignal(uint64_t capacity);

    // Forgets the past (silence) and keeps the newest `used` samples from now on: a power of
    // two up to the capacity, no more than the measurements need, so they touch less memory.
    // Every measurement's window is at least `minWindow` samples.
    void Reset(uint64_t used, uint64_t minWindow) noexcept;
    void Push(float value) noexcept
    {
        const uint64_t at = count_++ & mask_;
        ring_[at] = ring_[at + mask_ + 1] = value;
    }

    // The period near `estimate` (in this stream's samples): the nearest maximum of the
    // normalised square-difference function, climbing at most `steps` lags either way, refined
    // by parabolic interpolation. Each lag is judged over one period, but at least `minWindow`.
    double Refine(double estimate, int steps) const noexcept;
    // The best normalised square difference at lag - 1, lag or lag + 1 over the newest `window`
    // samples.
    double BestNear(int lag, uint64_t window) const noexcept;

private:
    struct Neighbours {
        double below;
        double centre;
        double above;
    };
    // The newest `samples`, oldest first.
    const float* Since(uint64_t samples) const noexcept;
    double Normalised(int lag) const noexcept;
    // The same at lag - 1, lag and lag + 1.
    Neighbours Around(int lag) const noexcept;

    std::vector<float> ring_;
    uint64_t capacity_;
    uint64_t mask_;
    uint64_t count_ = 0;
    uint64_t minWindow_ = 1;
};

} // namespace vocato::precise
