#include "NodeParameterWeb.h"

#include "NodeParameters.h"
#include "Presets.h"
#include "Truncate.h"
#include "VocatoNode.h"

#include <cstring>
#include <string>

namespace vocato {

namespace {

using media::Parameter;

// The preset and the program travel as whole numbers; every other value as a float.
bool IsIntParameter(int32_t id) {
    return id == PARAM_PRESET || id == PARAM_PROGRAM;
}

// The tracker refuses the open ends of some ranges; the controls stop one step inside them.
constexpr float kFine = 0.01f;

} // namespace

NodeParameterWeb::NodeParameterWeb(VocatoNode& node) : node_(node) {
    media::ParameterGroup& music = AddGroup("Notes");
    Parameter preset = Parameter::Discrete(PARAM_PRESET, "Preset");
    for (int32_t i = 0; i < kPresetCount; ++i) {
        preset.AddItem(i + 1, std::string(kPresets[i].label).c_str());
    }
    music.parameters.push_back(std::move(preset));
    music.parameters.push_back(Parameter::Continuous(PARAM_PROGRAM, "Program", 0, 127, 1, ""));
    music.parameters.push_back(Parameter::Continuous(PARAM_MIDI_MIN, "Lowest note", 11, 79, 1, ""));
    music.parameters.push_back(
        Parameter::Continuous(PARAM_MIDI_MAX, "Highest note", 36, 104, 1, ""));
    music.parameters.push_back(
        Parameter::Continuous(PARAM_TRANSPOSE, "Transposition", -36, 36, 1, "semitones"));
    music.parameters.push_back(
        Parameter::Continuous(PARAM_BEND_RANGE, "Bend range", 1, 35, 1, "semitones"));

    media::ParameterGroup& levels = AddGroup("Levels");
    levels.parameters.push_back(
        Parameter::Continuous(PARAM_START_LEVEL_DB, "Start level", -119, 0, 0.5f, "dB"));
    levels.parameters.push_back(
        Parameter::Continuous(PARAM_HOLD_LEVEL_DB, "Hold level", -119, 0, 0.5f, "dB"));
    levels.parameters.push_back(
        Parameter::Continuous(PARAM_LEVEL_CEIL_DB, "Level ceiling", -60, 0, 0.5f, "dB"));

    media::ParameterGroup& tracking = AddGroup("Tracking");
    tracking.parameters.push_back(
        Parameter::Continuous(PARAM_START_DISTANCE, "Start distance", kFine, 2 - kFine, kFine, ""));
    tracking.parameters.push_back(
        Parameter::Continuous(PARAM_HOLD_DISTANCE, "Hold distance", kFine, 2 - kFine, kFine, ""));
    tracking.parameters.push_back(Parameter::Continuous(PARAM_START_PERIODS, "Start periods", 1,
                                                        9 - kFine, kFine, "periods"));
    tracking.parameters.push_back(
        Parameter::Continuous(PARAM_HOLD_PERIODS, "Hold periods", 1, 30 - kFine, kFine, "periods"));
    tracking.parameters.push_back(
        Parameter::Continuous(PARAM_LAG_WEIGHT, "Lag weight", kFine, 1 - kFine, kFine, ""));
    tracking.parameters.push_back(Parameter::Continuous(PARAM_FILTER_SPAN, "Filter span",
                                                        0.1f + kFine, 3 - kFine, kFine, ""));
    tracking.parameters.push_back(
        Parameter::Continuous(PARAM_CONTINUITY, "Continuity", 0, 1 - kFine, kFine, ""));
}

bool NodeParameterWeb::GetValue(int32_t id, float* value) const {
    int64_t lastChange = 0;
    char bytes[4];
    size_t size = sizeof bytes;
    if (Find(id) == nullptr ||
        node_.GetParameterValue(id, &lastChange, bytes, &size) != media::kOk) {
        return false;
    }
    if (IsIntParameter(id)) {
        int32_t whole = 0;
        std::memcpy(&whole, bytes, sizeof whole);
        *value = static_cast<float>(whole);
    } else {
        std::memcpy(value, bytes, sizeof *value);
    }
    return true;
}

bool NodeParameterWeb::SetValue(int32_t id, float value) {
    if (Find(id) == nullptr) {
        return false;
    }
    const int64_t when = node_.Clock().NowMicros() + 1000;
    if (IsIntParameter(id)) {
        const int32_t whole = TruncToward0<int32_t>(value);
        node_.SetParameterValue(id, when, &whole, sizeof whole);
    } else {
        node_.SetParameterValue(id, when, &value, sizeof value);
    }
    return true;
}

} // namespace vocato
