// Host audio is float in [-1, 1]; the node takes signed 16-bit samples.
#pragma once

#include <cmath>
#include <cstdint>

namespace vocato::lv2 {

// Scaled by 32768, rounded to nearest and saturated, so that every int16 sample s written as
// s / 32768.0f comes back as s: the plugin then hears exactly what a 16-bit file holds. NaN
// (a host's broken buffer) is silence.
inline int16_t SampleToInt16(float sample) noexcept {
    if (std::isnan(sample)) {
        return 0;
    }
    const float scaled = std::nearbyint(sample * 32768.0f);
    if (scaled <= -32768.0f) {
        return -32768;
    }
    if (scaled >= 32767.0f) {
        return 32767;
    }
    return static_cast<int16_t>(scaled);
}

} // namespace vocato::lv2
