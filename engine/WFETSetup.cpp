// Creation, configuration and release of the engine record.
#include "WFET.h"

#include "SafeConvert.h"

#include <cmath>
#include <new>

using vocato::TruncToward0;

namespace {

double NoteToFrequency(const WFETState* s, double note) {
    return s->refPitch * std::pow(2.0, (note - 69) / 12);
}

int32_t SetMinFreq(WFETState* s, double v) {
    if (!(v > 0 && v < s->sampleRate * 0.5)) {
        return WFET_REJECTED;
    }
    s->minFreq = v;
    s->maxPeriod[0] = s->maxPeriod[1] = TruncToward0<int32_t>(s->sampleRate / v);
    TiaRBiquadFloat_Set(s->highPass, TIARBQ_FREQ, v * s->filterSpan);
    return WFET_ACCEPTED;
}

int32_t SetMaxFreq(WFETState* s, double v) {
    if (!(v > 0 && v < s->sampleRate * 0.5)) {
        return WFET_REJECTED;
    }
    s->maxFreq = v;
    s->minPeriod[0] = s->minPeriod[1] = TruncToward0<int32_t>(s->sampleRate / v);
    TiaRBiquadFloat_Set(s->lowPass, TIARBQ_FREQ, v * s->filterSpan);
    return WFET_ACCEPTED;
}

int32_t SetLevelFloorDb(WFETState* s, double v) {
    if (!(v < 0)) {
        return WFET_REJECTED;
    }
    s->levelFloorDb = v;
    return WFET_ACCEPTED;
}

double DbToLevel(double db) { return std::pow(10.0, db / 20) * 32768; }

TiaRBiquadFloat* MakeFilter(int16_t type, double frequency) {
    TiaRBiquadFloat* f = TiaRBiquadFloat_Begin();
    if (f != nullptr) {
        TiaRBiquadFloat_Set(f, TIARBQ_TYPE, type);
        TiaRBiquadFloat_Set(f, TIARBQ_FREQ, frequency);
    }
    return f;
}

void StoreDefaults(WFETState* s) {
    s->sampleRate = 44100;
    s->head = kWFETRingSize - 1; // so that the first extremum lands in entry 0
    s->minPeriod[0] = s->minPeriod[1] = 25;  // trunc(44100 / 1760)
    s->maxPeriod[0] = s->maxPeriod[1] = 801; // trunc(44100 / 55)
    s->minFreq = 55;
    s->maxFreq = 1760;
    s->refPitch = 440;
    s->frequency = -1;
    s->distance = kWFETNoDistance;
    s->bendRange = 2;
    s->mismatchPenalty[0] = s->mismatchPenalty[1] = 4;
    s->lagWeight[0] = s->lagWeight[1] = 0.001;
    s->maxDistance[0] = 0.2;
    s->maxDistance[1] = 0.5;
    s->minLevel[0] = 500;
    s->minLevel[1] = 50;
    s->ampTolerance[0] = 0.2;
    s->ampTolerance[1] = 0.5;
    s->periods[0] = 4;
    s->periods[1] = 2;
    s->continuityWeight = 1000;
    s->freqHistory[0] = s->freqHistory[1] = s->freqHistory[2] = 440;
    s->levelMode = WFET_LEVEL_EXPRESSION;
    // Callers set these three before the first frame. Until they do, the values are the ones
    // the defaults already imply: the cut-offs sit on the tracked range (a span of 1), the
    // floor is the default hold level (50) in decibels, and full scale maps to 127.
    s->filterSpan = 1;
    s->levelFloorDb = 20 * std::log10(50.0 / 32768);
    s->levelCeilDb = 0;
    s->forcesAt = s->extremaWritten - 1; // the first frame always refreshes
    s->lagsRef = -1;
}

} // namespace

WFETState* WFETBegProcess() {
    auto* s = new (std::nothrow) WFETState{}; // value-initialised: the ring is all zeros
    if (s == nullptr) {
        return nullptr;
    }
    StoreDefaults(s);
    s->lowPass = MakeFilter(TIARBQ_LOWPASS, 1760);
    s->highPass = MakeFilter(TIARBQ_HIGHPASS, 55);
    // An engine without its filters cannot analyse anything; rather than hand out a record
    // that would crash on the first sample, creation fails as a whole.
    if (s->lowPass == nullptr || s->highPass == nullptr) {
        WFETEndProcess(s);
        return nullptr;
    }
    return s;
}

int32_t WFETSet(WFETState* s, int16_t code, double v) {
    switch (code) {
    case WFET_SAMPLE_RATE:
        if (!(v > 4000 && v < 200000)) {
            return WFET_REJECTED;
        }
        s->sampleRate = v;
        TiaRBiquadFloat_Set(s->lowPass, TIARBQ_RATE, v);
        TiaRBiquadFloat_Set(s->highPass, TIARBQ_RATE, v);
        return WFET_ACCEPTED;
    case WFET_MIN_FREQ:
        return SetMinFreq(s, v);
    case WFET_MAX_FREQ:
        return SetMaxFreq(s, v);
    case WFET_MIN_NOTE:
        if (!(v > 10 && v < 80)) {
            return WFET_REJECTED;
        }
        SetMinFreq(s, NoteToFrequency(s, v));
        return WFET_ACCEPTED;
    case WFET_MAX_NOTE:
        if (!(v > 35 && v < 105)) {
            return WFET_REJECTED;
        }
        SetMaxFreq(s, NoteToFrequency(s, v));
        return WFET_ACCEPTED;
    case WFET_REF_PITCH:
        if (!(v > 0 && v < 1000)) {
            return WFET_REJECTED;
        }
        s->refPitch = v;
        return WFET_ACCEPTED;
    case WFET_BEND_RANGE:
        if (!(v >= 1 && v < 36)) {
            return WFET_REJECTED;
        }
        s->bendRange = static_cast<int16_t>(v);
        return WFET_ACCEPTED;
    case WFET_LEVEL_MODE:
        if (!(v >= 0 && v <= 3)) {
            return WFET_REJECTED;
        }
        s->levelMode = static_cast<int16_t>(v);
        return WFET_ACCEPTED;
    case WFET_LEVEL_FLOOR_DB:
        return SetLevelFloorDb(s, v);
    case WFET_LEVEL_CEIL_DB:
        if (!(v <= 0)) {
            return WFET_REJECTED;
        }
        s->levelCeilDb = v;
        return WFET_ACCEPTED;
    case WFET_START_LEVEL:
        if (!(v > 0 && v < 30000)) {
            return WFET_REJECTED;
        }
        s->minLevel[0] = v;
        return WFET_ACCEPTED;
    case WFET_HOLD_LEVEL:
        if (!(v > 0 && v < 30000)) {
            return WFET_REJECTED;
        }
        s->minLevel[1] = v;
        SetLevelFloorDb(s, 20 * std::log10(v / 32768));
        return WFET_ACCEPTED;
    case WFET_START_LEVEL_DB:
        if (!(v > -120 && v <= 0)) {
            return WFET_REJECTED;
        }
        s->minLevel[0] = DbToLevel(v);
        return WFET_ACCEPTED;
    case WFET_HOLD_LEVEL_DB:
        if (!(v > -120 && v <= 0)) {
            return WFET_REJECTED;
        }
        // 0 dB is a valid hold level but no valid floor: the floor then keeps its value.
        SetLevelFloorDb(s, v);
        s->minLevel[1] = DbToLevel(v);
        return WFET_ACCEPTED;
    case WFET_START_DISTANCE:
        if (!(v > 0 && v < 2)) {
            return WFET_REJECTED;
        }
        s->maxDistance[0] = v / 3;
        return WFET_ACCEPTED;
    case WFET_HOLD_DISTANCE:
        if (!(v > 0 && v < 2)) {
            return WFET_REJECTED;
        }
        s->maxDistance[1] = v * 0.5;
        return WFET_ACCEPTED;
    case WFET_START_PERIODS:
        if (!(v >= 1 && v < 9)) {
            return WFET_REJECTED;
        }
        s->periods[0] = static_cast<int32_t>(v);
        return WFET_ACCEPTED;
    case WFET_HOLD_PERIODS:
        if (!(v >= 1 && v < 30)) {
            return WFET_REJECTED;
        }
        s->periods[1] = static_cast<int32_t>(v);
        return WFET_ACCEPTED;
    case WFET_LAG_WEIGHT:
        if (!(v > 0 && v < 1)) {
            return WFET_REJECTED;
        }
        s->lagWeight[0] = s->lagWeight[1] = v / 100;
        return WFET_ACCEPTED;
    case WFET_FILTER_SPAN:
        if (!(v > 0.1 && v < 3)) {
            return WFET_REJECTED;
        }
        s->filterSpan = v;
        TiaRBiquadFloat_Set(s->highPass, TIARBQ_FREQ, v * s->minFreq);
        TiaRBiquadFloat_Set(s->lowPass, TIARBQ_FREQ, v * s->maxFreq);
        return WFET_ACCEPTED;
    case WFET_CONTINUITY:
        if (!(v >= 0 && v < 1)) {
            return WFET_REJECTED;
        }
        s->continuityWeight = v * 20000;
        return WFET_ACCEPTED;
    case WFET_MEDIAN:
        if (!(v == 0 || v == 1)) {
            return WFET_REJECTED;
        }
        s->medianOn = static_cast<int16_t>(v);
        return WFET_ACCEPTED;
    case WFET_CONFIRM:
        if (!(v == 0 || v == 1)) {
            return WFET_REJECTED;
        }
        s->confirmOn = static_cast<int16_t>(v);
        return WFET_ACCEPTED;
    default:
        // Callers never look at the result for an unknown code; report it as not stored.
        return WFET_REJECTED;
    }
}

void WFETEndProcess(WFETState* s) {
    if (s == nullptr) {
        return;
    }
    TiaRBiquadFloat_End(s->highPass);
    TiaRBiquadFloat_End(s->lowPass);
    delete s;
}
