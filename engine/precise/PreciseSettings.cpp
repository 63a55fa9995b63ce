#include "PreciseSettings.h"

#include "WFET.h"

#include <cmath>

namespace vocato::precise {
namespace {

// Written as "!(inside)" so that NaN is rejected like any other value out of range.
bool Outside(bool inside) { return !inside; }

double DbToLevel(double db) { return std::pow(10.0, db / 20.0) * 32768.0; }

} // namespace

double PreciseSettings::NoteFrequency(double note) const noexcept
{
    return refPitch * std::pow(2.0, (note - 69.0) / 12.0);
}

bool PreciseSettings::SetMinFreq(double value) noexcept
{
    if (Outside(value > 0.0 && value < sampleRate * 0.5)) {
        return false;
    }
    minFreq = value;
    ++geometryVersion;
    return true;
}

bool PreciseSettings::SetMaxFreq(double value) noexcept
{
    if (Outside(value > 0.0 && value < sampleRate * 0.5)) {
        return false;
    }
    maxFreq = value;
    ++geometryVersion;
    return true;
}

bool PreciseSettings::SetLevelFloorDb(double value) noexcept
{
    if (Outside(value < 0.0)) {
        return false;
    }
    levelFloorDb = value;
    return true;
}

int32_t PreciseSettings::Set(int16_t code, double v) noexcept
{
    // Codes that apply another code (3, 4, 31, 33) are accepted once their own range test
    // passes, whatever the applied code decides.
    switch (code) {
    case WFET_SAMPLE_RATE:
        if (Outside(v > 4000.0 && v < 200000.0)) return WFET_REJECTED;
        sampleRate = v;
        ++geometryVersion;
        return WFET_ACCEPTED;
    case WFET_MIN_FREQ:
        return SetMinFreq(v) ? WFET_ACCEPTED : WFET_REJECTED;
    case WFET_MAX_FREQ:
        return SetMaxFreq(v) ? WFET_ACCEPTED : WFET_REJECTED;
    case WFET_MIN_NOTE:
        if (Outside(v > 10.0 && v < 80.0)) return WFET_REJECTED;
        SetMinFreq(NoteFrequency(v));
        return WFET_ACCEPTED;
    case WFET_MAX_NOTE:
        if (Outside(v > 35.0 && v < 105.0)) return WFET_REJECTED;
        SetMaxFreq(NoteFrequency(v));
        return WFET_ACCEPTED;
    case WFET_REF_PITCH:
        if (Outside(v > 0.0 && v < 1000.0)) return WFET_REJECTED;
        refPitch = v;
        return WFET_ACCEPTED;
    case WFET_BEND_RANGE:
        if (Outside(v >= 1.0 && v < 36.0)) return WFET_REJECTED;
        bendRange = static_cast<int>(v);
        return WFET_ACCEPTED;
    case WFET_LEVEL_MODE:
        if (Outside(v >= 0.0 && v <= 3.0)) return WFET_REJECTED;
        levelMode = static_cast<int>(v);
        return WFET_ACCEPTED;
    case WFET_LEVEL_FLOOR_DB:
        return SetLevelFloorDb(v) ? WFET_ACCEPTED : WFET_REJECTED;
    case WFET_LEVEL_CEIL_DB:
        if (Outside(v <= 0.0)) return WFET_REJECTED;
        levelCeilDb = v;
        return WFET_ACCEPTED;
    case WFET_START_LEVEL:
        if (Outside(v > 0.0 && v < 30000.0)) return WFET_REJECTED;
        startLevel = v;
        return WFET_ACCEPTED;
    case WFET_HOLD_LEVEL:
        if (Outside(v > 0.0 && v < 30000.0)) return WFET_REJECTED;
        holdLevel = v;
        SetLevelFloorDb(20.0 * std::log10(v / 32768.0));
        return WFET_ACCEPTED;
    case WFET_START_LEVEL_DB:
        if (Outside(v > -120.0 && v <= 0.0)) return WFET_REJECTED;
        startLevel = DbToLevel(v);
        return WFET_ACCEPTED;
    case WFET_HOLD_LEVEL_DB:
        if (Outside(v > -120.0 && v <= 0.0)) return WFET_REJECTED;
        SetLevelFloorDb(v);
        holdLevel = DbToLevel(v);
        return WFET_ACCEPTED;
    case WFET_START_DISTANCE:
    case WFET_HOLD_DISTANCE:
        return Outside(v > 0.0 && v < 2.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_START_PERIODS:
        return Outside(v >= 1.0 && v < 9.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_HOLD_PERIODS:
        return Outside(v >= 1.0 && v < 30.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_LAG_WEIGHT:
        return Outside(v > 0.0 && v < 1.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_FILTER_SPAN:
        return Outside(v > 0.1 && v < 3.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_CONTINUITY:
        return Outside(v >= 0.0 && v < 1.0) ? WFET_REJECTED : WFET_ACCEPTED;
    case WFET_MEDIAN:
    case WFET_CONFIRM:
        return (v == 0.0 || v == 1.0) ? WFET_ACCEPTED : WFET_REJECTED;
    default:
        return WFET_REJECTED;
    }
}

} // namespace vocato::precise
