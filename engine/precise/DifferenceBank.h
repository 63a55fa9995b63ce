// Running square-difference sums of one decimated stream, for every lag at once.
//
// For every lag tau the bank holds the sum of (x[j] - x[j - tau])^2 over the last W(tau)
// samples, with W(tau) one period of tau but never less than a minimum nor more than a
// maximum, and turns it into the normalised square-difference function (McLeod and Wyvill,
// "A smarter way to find pitch", 2005): 1 - sum / (energy of both windows), 1 for an exact
// repetition, about 0 for noise.
// Samples are integers and the sums exact (integers below 2^53 in doubles, which vectorise
// better than 64-bit integers), so they never drift and the result does not depend on how the
// input was cut into blocks.
//
// Thread contract: construction allocates; everything else runs on the audio thread and never
// allocates.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>

namespace vocato::precise {

class DifferenceBank {
public:
    // Capacity for the worst configuration the parameter codes allow: 200 kHz without
    // decimation and a lowest frequency of 14 Hz. Samples must stay within +-2^17, so that
    // every sum stays below 2^53.
    static constexpr int kMaxLag = 15000;

    DifferenceBank();

    // Forgets the past (silence) and sets lags 1 .. maxLag + 1.
    void Reset(int maxLag, int minWindow, int maxWindow) noexcept;
    void Push(int32_t value) noexcept;
    // Fills Normalised() for lags 1 .. maxLag + 1.
    void Normalise() noexcept;

    const double* Normalised() const noexcept { return normalised_.get(); }
    // The highest normalised square difference of the newest `window` samples with those
    // lag - 1, lag or lag + 1 samples before them, computed on demand: the running sums judge
    // every lag over its own window, which a long lag fills only late.
    // window + lag + 1 <= 2 * (maxLag + 2).
    double NormalisedNear(int lag, int window) const noexcept;
    // Sample `back` samples before the newest (0 = newest), back <= 2 * (maxLag + 1).
    double Sample(uint64_t back) const noexcept { return past_[Newest(count_ - 1, mask_) + back]; }
    // Mean square of the newest `length` samples.
    double Power(uint64_t length) const noexcept;
    uint64_t Count() const noexcept { return count_; }
    // The window W(lag) of any lag, also beyond the configured ones.
    int Window(int lag) const noexcept { return std::clamp(lag, minWindow_, maxWindow_); }

private:
    // The rings are allocated for the largest lag but only as much of them is used as the
    // configured lags need, a power of two; memory that is never used is never touched, so
    // it costs neither the page faults nor the clearing.
    static constexpr uint64_t kCapacity = uint64_t(1) << 16;
    static_assert(std::bit_ceil(uint64_t(2 * (kMaxLag + 2)) + 256) <= kCapacity, "the rings hold the longest lags");

    // Where a ring that runs backwards puts sample `index`: the ones before it follow at
    // rising addresses.
    static uint64_t Newest(uint64_t index, uint64_t mask) noexcept { return mask - (index & mask); }

    // The past in reverse, so that every lag's samples are read forwards and the loops over
    // the lags vectorise: past_[Newest(t) + k] is the sample k before sample t. Each ring is
    // stored twice in a row so that no read wraps around.
    std::unique_ptr<double[]> past_;
    // The same for every other sample, one ring per parity of the sample index: the sample
    // two lags back of every lag, read forwards too.
    std::unique_ptr<double[]> pastByTwo_[2];
    std::unique_ptr<uint64_t[]> energy_; // running sum of squares up to each ring index (mod 2^64)
    std::unique_ptr<double[]> sums_;
    std::unique_ptr<int32_t[]> window_;
    std::unique_ptr<double[]> normalised_;
    uint64_t ringSize_ = 2;
    uint64_t mask_ = 1;
    uint64_t halfMask_ = 0;
    uint64_t count_ = 0;
    int maxLag_ = 2;
    int minWindow_ = 2;
    int maxWindow_ = 2;
};

} // namespace vocato::precise
