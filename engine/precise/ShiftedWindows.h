// The normalised square-difference function (McLeod and Wyvill, 2005) of one window of a
// signal against three others one sample apart, in one pass: the three share the newer window,
// and the older windows' energies follow from one another.
//
// Thread contract: pure functions; audio thread safe.
#pragma once

#include <algorithm>
#include <cstdint>

namespace vocato::precise {

// 1 - sum (a - b)^2 / sum (a^2 + b^2) over a window, from the energies of its newer half a and
// older half b and their cross term.
inline double NormalisedFromSums(double newer, double older, double cross)
{
    return newer + older > 0.0 ? 2.0 * cross / (newer + older) : 0.0;
}

// Where the vertex of the parabola through three neighbouring values lies, in samples from the
// middle one (within half a sample; 0 when the middle one is no maximum).
inline double PeakShift(double below, double centre, double above)
{
    const double curvature = below - 2.0 * centre + above;
    return curvature < 0.0 ? std::clamp(0.5 * (below - above) / curvature, -0.5, 0.5) : 0.0;
}

struct ThreeShifts {
    double first;  // against older[0 .. window)
    double second; // against older[1 .. window + 1)
    double third;  // against older[2 .. window + 2)
};

template <class Sample>
ThreeShifts NormalisedAgainstShifts(const Sample* newer, const Sample* older, uint64_t window) noexcept
{
    double newerEnergy = 0.0;
    double olderEnergy = 0.0; // of the first
    double cross[3] = {0.0, 0.0, 0.0};
    for (uint64_t k = 0; k < window; ++k) {
        const double a = newer[k];
        const double b = older[k];
        newerEnergy += a * a;
        olderEnergy += b * b;
        cross[0] += a * b;
        cross[1] += a * older[k + 1];
        cross[2] += a * older[k + 2];
    }
    const auto square = [](double v) { return v * v; };
    const double olderSecond = olderEnergy - square(older[0]) + square(older[window]);
    const double olderThird = olderSecond - square(older[1]) + square(older[window + 1]);
    return {NormalisedFromSums(newerEnergy, olderEnergy, cross[0]),
            NormalisedFromSums(newerEnergy, olderSecond, cross[1]),
            NormalisedFromSums(newerEnergy, olderThird, cross[2])};
}

} // namespace vocato::precise
