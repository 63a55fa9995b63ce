// The twenty input presets: a menu label, a settings block and a note range each.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vocato {

// Voice, or instrument kind 0, 1 or 2 (the blocks PresetBaseInstrument writes).
enum class PresetSettings { Voice, Instrument0, Instrument1, Instrument2 };

struct Preset {
    std::string_view label;
    PresetSettings settings;
    int32_t midiMin;
    int32_t midiMax;
};

inline constexpr int32_t kPresetCount = 20;

// Index 0 is preset 1.
inline constexpr std::array<Preset, kPresetCount> kPresets = {{
    {"Default", PresetSettings::Voice, 36, 72},
    {"Male voice", PresetSettings::Voice, 36, 72},
    {"Female voice", PresetSettings::Voice, 48, 78},
    {"Guitars", PresetSettings::Instrument2, 39, 76},
    {"Bass", PresetSettings::Instrument1, 27, 56},
    {"Violin", PresetSettings::Instrument0, 55, 103},
    {"Viola", PresetSettings::Instrument0, 48, 91},
    {"Cello", PresetSettings::Instrument0, 36, 76},
    {"Contrabass", PresetSettings::Instrument1, 28, 67},
    {"Trompet", PresetSettings::Instrument0, 55, 82},
    {"Trombon", PresetSettings::Instrument0, 40, 72},
    {"French Horn", PresetSettings::Instrument0, 34, 77},
    {"Tuba", PresetSettings::Instrument0, 28, 58},
    {"Horn", PresetSettings::Instrument0, 52, 81},
    {"Clarinet", PresetSettings::Instrument0, 50, 94},
    {"Bassoon", PresetSettings::Instrument0, 34, 75},
    {"Piccolo", PresetSettings::Instrument0, 74, 102},
    {"Flute", PresetSettings::Instrument0, 60, 96},
    {"Oboe", PresetSettings::Instrument0, 58, 91},
    {"Alto recorder", PresetSettings::Instrument0, 55, 91},
}};

} // namespace vocato
