#include "DifferenceBank.h"

#include <algorithm>
#include <cmath>

namespace vocato::precise {

DifferenceBank::DifferenceBank()
    : past_(2 * kRingSize, 0.0),
      pastByTwo_{std::vector<double>(kRingSize, 0.0), std::vector<double>(kRingSize, 0.0)},
      energy_(kRingSize, 0), sums_(kMaxLag + 2, 0.0), window_(kMaxLag + 2, 1),
      normalised_(kMaxLag + 2, 0.0)
{
}

void DifferenceBank::Reset(int maxLag, int minWindow) noexcept
{
    maxLag_ = std::clamp(maxLag, 2, kMaxLag);
    minWindow_ = std::clamp(minWindow, 2, maxLag_ + 1);
    for (int lag = 1; lag <= maxLag_ + 1; ++lag) {
        window_[lag] = std::max(minWindow_, lag);
    }
    std::fill(past_.begin(), past_.end(), 0.0);
    for (std::vector<double>& ring : pastByTwo_) {
        std::fill(ring.begin(), ring.end(), 0.0);
    }
    std::fill(energy_.begin(), energy_.end(), 0);
    std::fill(sums_.begin(), sums_.end(), 0.0);
    std::fill(normalised_.begin(), normalised_.end(), 0.0);
    count_ = 0;
}

void DifferenceBank::Push(int32_t value) noexcept
{
    const uint64_t t = count_++;
    energy_[t & kMask] = energy_[(t - 1) & kMask] + uint64_t(int64_t(value) * value);
    // x[k] is the sample k before the newest and x2[k] the one 2k before. Before the first
    // sample the rings hold zeros, so the sums treat the past as silence.
    const uint64_t at = Newest(t, kMask);
    past_[at] = past_[at + kRingSize] = value;
    const double* x = past_.data() + at;
    std::vector<double>& byTwo = pastByTwo_[t & 1];
    const uint64_t halfAt = Newest(t >> 1, kHalfMask);
    byTwo[halfAt] = byTwo[halfAt + kRingSize / 2] = value;
    const double* x2 = byTwo.data() + halfAt;
    const double v = value;
    double* sums = sums_.data();
    const int w = minWindow_;
    const int last = maxLag_ + 1;
    // Lags shorter than the minimum window share one window length ...
    for (int lag = 1; lag < w; ++lag) {
        const double enter = v - x[lag];
        const double leave = x[w] - x[w + lag];
        sums[lag] += enter * enter - leave * leave;
    }
    // ... and the others are compared over one period of their own.
    for (int lag = w; lag <= last; ++lag) {
        const double enter = v - x[lag];
        const double leave = x[lag] - x2[lag];
        sums[lag] += enter * enter - leave * leave;
    }
}

void DifferenceBank::Normalise() noexcept
{
    if (count_ == 0) {
        return;
    }
    const uint64_t t = count_ - 1;
    const uint64_t now = energy_[t & kMask];
    for (int lag = 1; lag <= maxLag_ + 1; ++lag) {
        const uint64_t w = uint64_t(window_[lag]);
        const uint64_t recent = now - energy_[(t - w) & kMask];
        const uint64_t earlier = energy_[(t - lag) & kMask] - energy_[(t - lag - w) & kMask];
        const double total = double(recent) + double(earlier);
        normalised_[lag] = total > 0.0 ? 1.0 - sums_[lag] / total : 0.0;
    }
}

double DifferenceBank::Power(uint64_t length) const noexcept
{
    if (count_ == 0) {
        return 0.0;
    }
    length = std::clamp<uint64_t>(length, 1, kRingSize - 1);
    const uint64_t t = count_ - 1;
    return double(energy_[t & kMask] - energy_[(t - length) & kMask]) / double(length);
}

} // namespace vocato::precise
