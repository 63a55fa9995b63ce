// The node's time stamps, truncated the way its note and stamp arithmetic requires.
#pragma once

#include "SafeConvert.h"

#include <cstdint>

namespace vocato {

// A millisecond time stamp: truncated to 64 bits, then its low 32 bits.
constexpr uint32_t StampMs(double ms) noexcept {
    return static_cast<uint32_t>(TruncToward0<int64_t>(ms));
}

} // namespace vocato
