// The node's sixteen parameters. Every value is 4 bytes: a float, except the preset and the
// General MIDI program, which are int32.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vocato {

enum : int32_t {
    PARAM_START_DISTANCE = 21,
    PARAM_HOLD_DISTANCE = 23,
    PARAM_START_LEVEL_DB = 25,
    PARAM_HOLD_LEVEL_DB = 27,
    PARAM_BEND_RANGE = 29,
    PARAM_TRANSPOSE = 31,
    PARAM_START_PERIODS = 33,
    PARAM_HOLD_PERIODS = 35,
    PARAM_LAG_WEIGHT = 37,
    PARAM_FILTER_SPAN = 39,
    PARAM_CONTINUITY = 41,
    PARAM_LEVEL_CEIL_DB = 43,
    PARAM_PRESET = 45,
    PARAM_MIDI_MIN = 47,
    PARAM_MIDI_MAX = 49,
    PARAM_PROGRAM = 300,
};

inline constexpr size_t kParameterCount = 16;

// The order in which the node keeps the last-change times.
inline constexpr std::array<int32_t, kParameterCount> kParameterIds = {
    PARAM_PROGRAM,       PARAM_PRESET,         PARAM_BEND_RANGE,    PARAM_MIDI_MIN,
    PARAM_MIDI_MAX,      PARAM_START_LEVEL_DB, PARAM_HOLD_LEVEL_DB, PARAM_START_DISTANCE,
    PARAM_HOLD_DISTANCE, PARAM_START_PERIODS,  PARAM_HOLD_PERIODS,  PARAM_LAG_WEIGHT,
    PARAM_FILTER_SPAN,   PARAM_CONTINUITY,     PARAM_LEVEL_CEIL_DB, PARAM_TRANSPOSE,
};

// Index into kParameterIds, or -1 for an id the node does not know.
constexpr int ParameterIndex(int32_t id) noexcept {
    for (size_t i = 0; i < kParameterIds.size(); ++i) {
        if (kParameterIds[i] == id) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

// Any thread. Told of every value the node applies, on the node's thread; must not block.
class ParameterListener {
public:
    virtual ~ParameterListener() = default;
    virtual void ParameterChanged(int64_t when, int32_t id, const void* value,
                                  size_t size) noexcept = 0;
};

} // namespace vocato
