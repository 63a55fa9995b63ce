// The parameters the precise tracker takes from the engine's parameter codes.
//
// The tracker accepts exactly what the classic engine accepts (same codes, same ranges, same
// 1 accepted / 0 rejected results), so a preset configures either one. It uses the sample
// rate, the note range, the reference pitch, the bend range, the level mode and the level
// thresholds; the codes that tune the classic method's shape matching (34-42) are checked and
// then ignored.
#pragma once

#include <cstdint>

namespace vocato::precise {

struct PreciseSettings {
    double sampleRate = 44100.0;
    double minFreq = 55.0;
    double maxFreq = 1760.0;
    double refPitch = 440.0;
    int bendRange = 2;
    int levelMode = 2;
    // 20 log10(50 / 32768): the floor that the default hold level implies.
    double levelFloorDb = -56.329;
    double levelCeilDb = -6.0;
    double startLevel = 500.0; // peak level on the 16-bit scale needed to start a note
    double holdLevel = 50.0;   // and to keep one
    // Bumped whenever the rate or the range changes, so the analysis re-derives its geometry.
    uint32_t geometryVersion = 0;

    // WFET_ACCEPTED or WFET_REJECTED; a rejected value changes nothing.
    int32_t Set(int16_t code, double value) noexcept;

private:
    bool SetMinFreq(double value) noexcept;
    bool SetMaxFreq(double value) noexcept;
    bool SetLevelFloorDb(double value) noexcept;
    double NoteFrequency(double note) const noexcept;
};

} // namespace vocato::precise
