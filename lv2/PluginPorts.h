// The plugin's ports, in the order vocato.ttl numbers them, and what each control port carries.
// The description in vocato.ttl must agree with this table; a test reads both and compares.
#pragma once

#include "NodeParameters.h"
#include "PitchTracker.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vocato::lv2 {

inline constexpr char kPluginUri[] = "urn:vocato:lv2:vocato";

enum PortIndex : uint32_t {
    kAudioIn = 0,
    kMidiOut = 1,
    kLatency = 2,
    kPreset = 3,
    kProgram,
    kTranspose,
    kBendRange,
    kMidiMin,
    kMidiMax,
    kStartDistance,
    kHoldDistance,
    kStartLevelDb,
    kHoldLevelDb,
    kStartPeriods,
    kHoldPeriods,
    kLagWeight,
    kFilterSpan,
    kContinuity,
    kLevelCeilDb,
    kMedian,
    kConfirm,
    kTracker,
    kPortCount,
};

inline constexpr uint32_t kFirstControl = kPreset;
inline constexpr size_t kControlCount = kPortCount - kFirstControl;

// What a control input port drives in the node.
enum class PortTarget {
    FloatParameter, // SetParameterValue with the float as it stands
    IntParameter,   // SetParameterValue with the value rounded to an int32
    EngineSwitch,   // SetEngineSwitches (median, confirm)
    Tracker,        // the tracker kind
};

struct ControlPort {
    PortIndex index;
    std::string_view symbol;
    PortTarget target;
    int32_t parameter; // the node's parameter id; 0 when the target is not a parameter
    float minimum;
    float maximum;
    float defaultValue;
};

// The ranges stay inside what the engine accepts (its bounds are often exclusive); the
// defaults are the node's values after construction, which are those of preset 1.
inline constexpr std::array<ControlPort, kControlCount> kControlPorts = {{
    {kPreset, "preset", PortTarget::IntParameter, PARAM_PRESET, 1, 20, 1},
    {kProgram, "program", PortTarget::IntParameter, PARAM_PROGRAM, 0, 127, 0},
    {kTranspose, "transpose", PortTarget::FloatParameter, PARAM_TRANSPOSE, -48, 48, 0},
    {kBendRange, "bend_range", PortTarget::FloatParameter, PARAM_BEND_RANGE, 1, 35, 4},
    {kMidiMin, "note_min", PortTarget::FloatParameter, PARAM_MIDI_MIN, 11, 79, 36},
    {kMidiMax, "note_max", PortTarget::FloatParameter, PARAM_MIDI_MAX, 36, 104, 72},
    {kStartDistance, "start_distance", PortTarget::FloatParameter, PARAM_START_DISTANCE, 0.01f,
     1.99f, 0.1f},
    {kHoldDistance, "hold_distance", PortTarget::FloatParameter, PARAM_HOLD_DISTANCE, 0.01f, 1.99f,
     0.3f},
    {kStartLevelDb, "start_level", PortTarget::FloatParameter, PARAM_START_LEVEL_DB, -119, 0, -24},
    {kHoldLevelDb, "hold_level", PortTarget::FloatParameter, PARAM_HOLD_LEVEL_DB, -119, 0, -36},
    {kStartPeriods, "start_periods", PortTarget::FloatParameter, PARAM_START_PERIODS, 1, 8.9f, 2},
    {kHoldPeriods, "hold_periods", PortTarget::FloatParameter, PARAM_HOLD_PERIODS, 1, 29.9f, 2},
    {kLagWeight, "lag_weight", PortTarget::FloatParameter, PARAM_LAG_WEIGHT, 0.01f, 0.99f, 0.1f},
    {kFilterSpan, "filter_span", PortTarget::FloatParameter, PARAM_FILTER_SPAN, 0.2f, 2.9f, 1},
    {kContinuity, "continuity", PortTarget::FloatParameter, PARAM_CONTINUITY, 0, 0.99f, 0.1f},
    {kLevelCeilDb, "level_ceiling", PortTarget::FloatParameter, PARAM_LEVEL_CEIL_DB, -60, 0, -6},
    {kMedian, "median", PortTarget::EngineSwitch, 0, 0, 1, 0},
    {kConfirm, "confirm", PortTarget::EngineSwitch, 0, 0, 1, 0},
    {kTracker, "tracker", PortTarget::Tracker, 0, 0, 1,
     static_cast<float>(static_cast<int32_t>(kDefaultTrackerKind))},
}};

constexpr const ControlPort& ControlPortAt(PortIndex index) noexcept {
    return kControlPorts[index - kFirstControl];
}

} // namespace vocato::lv2
