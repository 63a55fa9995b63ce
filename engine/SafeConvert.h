// Real-to-integer conversions that truncate toward zero, as the engine's arithmetic requires,
// but never invoke undefined behaviour: hostile parameters (NaN, infinities, values far outside
// the range of the destination) saturate instead. For every value that fits, the result is the
// plain C++ truncation.
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

template <typename Int> constexpr Int ClampToInt(int64_t v) noexcept {
    if (v < std::numeric_limits<Int>::min()) {
        return std::numeric_limits<Int>::min();
    }
    if (v > std::numeric_limits<Int>::max()) {
        return std::numeric_limits<Int>::max();
    }
    return static_cast<Int>(v);
}

} // namespace vocato
