// The envelope of a power that follows it up at once and sinks at most `dbPerSecond` over
// `seconds`: the ceiling a release is judged against, and the level of a fading tail whose
// beating with the next note must not read as it growing again.
#pragma once

#include <algorithm>
#include <cmath>

namespace vocato::precise {

inline double SinkingPeak(double peak, double power, double dbPerSecond, double seconds) noexcept
{
    return std::max(power, peak * std::pow(10.0, -dbPerSecond * seconds / 10.0));
}

} // namespace vocato::precise
