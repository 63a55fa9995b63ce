#include "DifferenceBank.h"

#include "ShiftedWindows.h"

#include <algorithm>
#include <bit>
#include <cmath>

// Push's loops over the lags run four doubles wide where the processor has AVX2, two wide
// elsewhere. The sums are exact integers, so the result is the same either way. The loader
// picks the version before ThreadSanitizer's runtime has started, which then crashes the
// program, so a ThreadSanitizer build keeps the one.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define VOCATO_WIDE_WHERE_AVAILABLE __attribute__((target_clones("avx2", "default")))
#else
#define VOCATO_WIDE_WHERE_AVAILABLE
#endif

namespace vocato::precise {

// Left uninitialised on purpose (Reset clears what is used): see kCapacity.
DifferenceBank::DifferenceBank()
    : past_(new double[2 * kCapacity]),
      pastByTwo_{std::unique_ptr<double[]>(new double[kCapacity]), std::unique_ptr<double[]>(new double[kCapacity])},
      energy_(new uint64_t[kCapacity]), sums_(new double[kMaxLag + 2]), window_(new int32_t[kMaxLag + 2]),
      normalised_(new double[kMaxLag + 2])
{
    Reset(2, 2, 2);
}

void DifferenceBank::Reset(int maxLag, int minWindow, int maxWindow) noexcept
{
    maxLag_ = std::clamp(maxLag, 2, kMaxLag);
    minWindow_ = std::clamp(minWindow, 2, maxLag_ + 1);
    maxWindow_ = std::clamp(maxWindow, minWindow_, maxLag_ + 1);
    // The oldest reads go back two of the longest windows and lags, and Power a few ms more.
    ringSize_ = std::bit_ceil(uint64_t(2 * (maxLag_ + 2)) + 256);
    mask_ = ringSize_ - 1;
    halfMask_ = ringSize_ / 2 - 1;
    for (int lag = 1; lag <= maxLag_ + 1; ++lag) {
        window_[lag] = Window(lag);
    }
    std::fill_n(past_.get(), 2 * ringSize_, 0.0);
    for (std::unique_ptr<double[]>& ring : pastByTwo_) {
        std::fill_n(ring.get(), ringSize_, 0.0);
    }
    std::fill_n(energy_.get(), ringSize_, 0);
    std::fill_n(sums_.get(), maxLag_ + 2, 0.0);
    std::fill_n(normalised_.get(), maxLag_ + 2, 0.0);
    count_ = 0;
}

VOCATO_WIDE_WHERE_AVAILABLE void DifferenceBank::Push(int32_t value) noexcept
{
    const uint64_t t = count_++;
    energy_[t & mask_] = energy_[(t - 1) & mask_] + uint64_t(int64_t(value) * value);
    // x[k] is the sample k before the newest and x2[k] the one 2k before. Before the first
    // sample the rings hold zeros, so the sums treat the past as silence.
    const uint64_t at = Newest(t, mask_);
    past_[at] = past_[at + ringSize_] = value;
    const double* x = past_.get() + at;
    double* byTwo = pastByTwo_[t & 1].get();
    const uint64_t halfAt = Newest(t >> 1, halfMask_);
    byTwo[halfAt] = byTwo[halfAt + ringSize_ / 2] = value;
    const double* x2 = byTwo + halfAt;
    const double v = value;
    double* sums = sums_.get();
    const int w = minWindow_;
    const int longest = maxWindow_;
    const int last = maxLag_ + 1;
    // Lags shorter than the minimum window share one window length ...
    for (int lag = 1; lag < w; ++lag) {
        const double enter = v - x[lag];
        const double leave = x[w] - x[w + lag];
        sums[lag] += enter * enter - leave * leave;
    }
    // ... the others are compared over one period of their own ...
    for (int lag = w; lag <= std::min(longest, last); ++lag) {
        const double enter = v - x[lag];
        const double leave = x[lag] - x2[lag];
        sums[lag] += enter * enter - leave * leave;
    }
    // ... up to the maximum window, which the longest lags share again.
    for (int lag = longest + 1; lag <= last; ++lag) {
        const double enter = v - x[lag];
        const double leave = x[longest] - x[longest + lag];
        sums[lag] += enter * enter - leave * leave;
    }
}

void DifferenceBank::Normalise() noexcept
{
    if (count_ == 0) {
        return;
    }
    const uint64_t t = count_ - 1;
    const uint64_t now = energy_[t & mask_];
    for (int lag = 1; lag <= maxLag_ + 1; ++lag) {
        const uint64_t w = uint64_t(window_[lag]);
        const uint64_t recent = now - energy_[(t - w) & mask_];
        const uint64_t earlier = energy_[(t - lag) & mask_] - energy_[(t - lag - w) & mask_];
        const double total = double(recent) + double(earlier);
        normalised_[lag] = total > 0.0 ? 1.0 - sums_[lag] / total : 0.0;
    }
}

double DifferenceBank::NormalisedNear(int lag, int window) const noexcept
{
    const double* x = past_.get() + Newest(count_ - 1, mask_);
    const ThreeShifts n = NormalisedAgainstShifts(x, x + lag - 1, uint64_t(window));
    return std::max({n.first, n.second, n.third});
}

double DifferenceBank::Power(uint64_t length) const noexcept
{
    if (count_ == 0) {
        return 0.0;
    }
    length = std::clamp<uint64_t>(length, 1, ringSize_ - 1);
    const uint64_t t = count_ - 1;
    return double(energy_[t & mask_] - energy_[(t - length) & mask_]) / double(length);
}

} // namespace vocato::precise
