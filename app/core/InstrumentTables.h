#pragma once

#include <array>

namespace vocato {

// A General MIDI family: eight instruments whose programs are 8 * family + item.
struct GMFamily {
    const char* label;
    std::array<const char*, 8> instruments;
};

// The sixteen families of the General MIDI Level 1 sound set, in program order.
extern const std::array<GMFamily, 16> kGMFamilies;

// The labels of the twenty input presets; preset n is kPresetLabels[n - 1].
extern const std::array<const char*, 20> kPresetLabels;

} // namespace vocato
