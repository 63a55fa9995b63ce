#include "BenchPresets.h"

namespace vocato::bench {
namespace {

struct Block {
    float levelMode, bendRange, startLevelDb, holdLevelDb, startDistance, holdDistance;
    float startPeriods, holdPeriods, lagWeight, filterSpan, continuity;
};

constexpr Block kVoice{2, 4.0f, -24.0f, -36.0f, 0.1f, 0.3f, 2, 2, 0.1f, 1.0f, 0.1f};
constexpr Block kInstrument[3] = {
    {1, 2.0f, -27.0f, -40.0f, 0.2f, 0.4f, 2, 2, 0.1f, 1.0f, 0.5f},
    {1, 2.0f, -27.0f, -40.0f, 0.2f, 0.4f, 1, 1, 0.1f, 2.0f, 0.5f},
    {1, 6.0f, -27.0f, -40.0f, 0.2f, 0.4f, 2, 2, 0.1f, 1.0f, 0.5f},
};

struct Preset {
    const Block* block;
    int midiMin, midiMax;
};

const Preset kPresets[20] = {
    {&kVoice, 36, 72},         {&kVoice, 36, 72},         {&kVoice, 48, 78},
    {&kInstrument[2], 39, 76}, {&kInstrument[1], 27, 56}, {&kInstrument[0], 55, 103},
    {&kInstrument[0], 48, 91}, {&kInstrument[0], 36, 76}, {&kInstrument[1], 28, 67},
    {&kInstrument[0], 55, 82}, {&kInstrument[0], 40, 72}, {&kInstrument[0], 34, 77},
    {&kInstrument[0], 28, 58}, {&kInstrument[0], 52, 81}, {&kInstrument[0], 50, 94},
    {&kInstrument[0], 34, 75}, {&kInstrument[0], 74, 102}, {&kInstrument[0], 60, 96},
    {&kInstrument[0], 58, 91}, {&kInstrument[0], 55, 91},
};

constexpr double kLevelCeilDb = -6.0;

} // namespace

bool ApplyPreset(PitchTracker& tracker, int number, double sampleRate)
{
    if (number < 1 || number > 20) {
        return false;
    }
    const Preset& p = kPresets[number - 1];
    const Block& b = *p.block;
    tracker.Set(WFET_SAMPLE_RATE, sampleRate);
    tracker.Set(WFET_FILTER_SPAN, b.filterSpan);
    tracker.Set(WFET_MAX_NOTE, p.midiMax);
    tracker.Set(WFET_MIN_NOTE, p.midiMin);
    tracker.Set(WFET_BEND_RANGE, b.bendRange);
    tracker.Set(WFET_START_LEVEL_DB, b.startLevelDb);
    tracker.Set(WFET_HOLD_LEVEL_DB, b.holdLevelDb);
    tracker.Set(WFET_START_DISTANCE, b.startDistance);
    tracker.Set(WFET_HOLD_DISTANCE, b.holdDistance);
    tracker.Set(WFET_LAG_WEIGHT, b.lagWeight);
    tracker.Set(WFET_START_PERIODS, b.startPeriods);
    tracker.Set(WFET_HOLD_PERIODS, b.holdPeriods);
    tracker.Set(WFET_CONTINUITY, b.continuity);
    tracker.Set(WFET_MEDIAN, 0.0);
    tracker.Set(WFET_CONFIRM, 0.0);
    tracker.Set(WFET_LEVEL_CEIL_DB, kLevelCeilDb);
    tracker.Set(WFET_LEVEL_MODE, b.levelMode);
    return true;
}

} // namespace vocato::bench
