#include "RecentSignal.h"

#include "ShiftedWindows.h"

#include <algorithm>
#include <cmath>

namespace vocato::precise {

RecentSignal::RecentSignal(uint64_t capacity) : ring_(2 * capacity, 0.0f), capacity_(capacity), mask_(capacity - 1) {}

void RecentSignal::Reset(uint64_t used, uint64_t minWindow) noexcept
{
    mask_ = std::clamp<uint64_t>(used, 1, capacity_) - 1;
    std::fill(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(2 * (mask_ + 1)), 0.0f);
    count_ = 0;
    minWindow_ = std::max<uint64_t>(1, minWindow);
}

const float* RecentSignal::Since(uint64_t samples) const noexcept
{
    return ring_.data() + ((count_ - samples) & mask_);
}

double RecentSignal::Normalised(int lag) const noexcept
{
    // One period, but at least a few milliseconds: a window that is not a whole number of
    // periods makes the estimate wobble, less so the more periods it holds.
    const uint64_t window = std::max<uint64_t>(uint64_t(lag), minWindow_);
    const float* y = Since(window + lag);
    double newer = 0.0;
    double older = 0.0;
    double cross = 0.0;
    for (uint64_t k = 0; k < window; ++k) {
        const double a = y[k + lag];
        const double b = y[k];
        newer += a * a;
        older += b * b;
        cross += a * b;
    }
    return NormalisedFromSums(newer, older, cross);
}

RecentSignal::Neighbours RecentSignal::Around(int lag) const noexcept
{
    if (uint64_t(lag) + 1 > minWindow_) {
        return {Normalised(lag - 1), Normalised(lag), Normalised(lag + 1)};
    }
    // All three share the window (ShiftedWindows.h): the longest lag's older window comes first.
    const float* y = Since(minWindow_ + lag + 1);
    const ThreeShifts n = NormalisedAgainstShifts(y + lag + 1, y, minWindow_);
    return {n.third, n.second, n.first};
}

double RecentSignal::Refine(double estimate, int steps) const noexcept
{
    const int limit = static_cast<int>((mask_ + 1) / 4);
    int lag = std::clamp(static_cast<int>(std::lround(estimate)), 2, limit);
    auto [below, centre, above] = Around(lag);
    for (int step = 0; step < steps && lag > 2 && lag < limit; ++step) {
        if (above > centre && above >= below) {
            below = centre;
            centre = above;
            above = Normalised(++lag + 1);
        } else if (below > centre) {
            above = centre;
            centre = below;
            below = Normalised(--lag - 1);
        } else {
            break;
        }
    }
    return lag + PeakShift(below, centre, above);
}

double RecentSignal::BestNear(int lag, uint64_t window) const noexcept
{
    const float* y = Since(window + lag + 1);
    const ThreeShifts n = NormalisedAgainstShifts(y + lag + 1, y, window);
    return std::max({n.first, n.second, n.third});
}

} // namespace vocato::precise
