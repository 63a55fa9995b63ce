#pragma once

#include <cstdint>

namespace vocato {

// Results of message, settings and resource operations. Zero is success and
// every error is negative, so `status < B_OK` tests for any failure.
using status_t = int32_t;

inline constexpr status_t B_OK = 0;
inline constexpr status_t B_ERROR = -1;
inline constexpr status_t B_BAD_VALUE = -2;
inline constexpr status_t B_BAD_TYPE = -3;
inline constexpr status_t B_NAME_NOT_FOUND = -4;
inline constexpr status_t B_BAD_INDEX = -5;
inline constexpr status_t B_ENTRY_NOT_FOUND = -6;
inline constexpr status_t B_IO_ERROR = -7;
inline constexpr status_t B_BAD_DATA = -8;

} // namespace vocato
