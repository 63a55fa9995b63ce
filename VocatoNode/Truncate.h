// Real-to-integer conversion truncating toward zero, as the node's note and stamp arithmetic
// requires, without undefined behaviour for NaN, infinities or values out of range: NaN gives
// 0 and the rest saturate.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vocato {

template <typename Int> constexpr Int TruncToward0(double v) noexcept {
    constexpr double lo = static_cast<double>(std::numeric_limits<Int>::min());
    constexpr double hi = static_cast<double>(std::numeric_limits<Int>::max());
    if (std::isnan(v)) {
        return 0;
    }
    if (v <= lo) {
        return std::numeric_limits<Int>::min();
    }
    if (v >= hi) {
        return std::numeric_limits<Int>::max();
    }
    return static_cast<Int>(v);
}

// A millisecond time stamp: truncated to 64 bits, then its low 32 bits.
constexpr uint32_t StampMs(double ms) noexcept {
    return static_cast<uint32_t>(TruncToward0<int64_t>(ms));
}

} // namespace vocato
