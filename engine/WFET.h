// The pitch-to-MIDI engine: plain functions on one record, WFETState.
//
// A stream of signed 16-bit mono samples goes in, 16 samples at a time (WFETProcess), and once
// per 16 samples an analysis frame (WFETCalc) decides which note to end, which note to start
// and with what velocity, the 14-bit pitch bend and the expression value, written into the
// caller's WFETMidiOut. The engine never sends MIDI itself.
//
// Lifecycle: WFETBegProcess, WFETSet (configuration, see the calling order below),
// then per chunk WFETProcess + WFETCalc, and WFETEndProcess. Nothing is allocated after
// WFETBegProcess. A record must be used by one thread at a time.
//
// Configuration order: the sample rate (code 0) before the frequency range, because codes 1 and
// 2 derive the period bounds from the current rate; the filter span (39) before codes 1-4; the
// reference pitch (5) before codes 3 and 4; the level floor (8, or 31/33) and ceiling (9)
// before the first WFETCalc.
//
// Units: frequencies in Hz; periods, intervals and lags in samples; levels on the 16-bit
// scale (full scale 32768); decibels relative to 32768. Every real-to-integer conversion
// truncates toward zero.
#pragma once

#include "TiaRBiquadFloat.h"

#include <cstdint>

// Parameter codes of WFETSet, with accepted values. Codes 10-29 and above 42 are unknown.
enum : int16_t {
    WFET_SAMPLE_RATE = 0,     // 4000 < v < 200000 [44100]; period bounds are NOT recomputed
    WFET_MIN_FREQ = 1,        // 0 < v < rate/2 [55]; maxPeriod = trunc(rate / v)
    WFET_MAX_FREQ = 2,        // 0 < v < rate/2 [1760]; minPeriod = trunc(rate / v)
    WFET_MIN_NOTE = 3,        // 10 < v < 80; applies code 1 with the note's frequency
    WFET_MAX_NOTE = 4,        // 35 < v < 105; applies code 2 with the note's frequency
    WFET_REF_PITCH = 5,       // 0 < v < 1000 [440]; frequency of MIDI note 69
    WFET_BEND_RANGE = 6,      // 1 <= v < 36 semitones [2]
    WFET_LEVEL_MODE = 7,      // 0 <= v <= 3 [2], see the WFET_LEVEL_* modes
    WFET_LEVEL_FLOOR_DB = 8,  // v < 0 dB: level mapped to 0
    WFET_LEVEL_CEIL_DB = 9,   // v <= 0 dB: level mapped to 127
    WFET_START_LEVEL = 30,    // 0 < v < 30000: input level needed to start a note [500]
    WFET_HOLD_LEVEL = 31,     // 0 < v < 30000: level needed to keep one [50]; also sets code 8
    WFET_START_LEVEL_DB = 32, // -120 < v <= 0 dB, the start level in decibels
    WFET_HOLD_LEVEL_DB = 33,  // -120 < v <= 0 dB: sets code 8 with v, then the hold level
    WFET_START_DISTANCE = 34, // 0 < v < 2: largest shape distance to start = v / 3 [0.2]
    WFET_HOLD_DISTANCE = 35,  // 0 < v < 2: largest shape distance to hold = v / 2 [0.5]
    WFET_START_PERIODS = 36,  // 1 <= v < 9: periods compared while idle [4]
    WFET_HOLD_PERIODS = 37,   // 1 <= v < 30: periods compared while sounding [2]
    WFET_LAG_WEIGHT = 38,     // 0 < v < 1: penalty per sample of lag = v / 100 [0.001]
    WFET_FILTER_SPAN = 39,    // 0.1 < v < 3: factor between the tracked range and the cut-offs
    WFET_CONTINUITY = 40,     // 0 <= v < 1: period-continuity weight = v * 20000 [1000]
    WFET_MEDIAN = 41,         // exactly 0 or 1: decide on the median of three frequencies
    WFET_CONFIRM = 42,        // exactly 0 or 1: a note starts on the second voiced frame only
};

// Results of WFETSet. The polarity is the reverse of a status code: 1 means accepted.
enum : int32_t {
    WFET_REJECTED = 0,
    WFET_ACCEPTED = 1,
};

// How the input level becomes velocity and expression (values of WFET_LEVEL_MODE).
enum : int16_t {
    WFET_LEVEL_VELOCITY = 0,   // velocity = level, expression 127
    WFET_LEVEL_RELATIVE = 1,   // velocity = level, expression relative to it (96 at the start)
    WFET_LEVEL_EXPRESSION = 2, // velocity 127, expression = level
    WFET_LEVEL_NONE = 3,       // velocity and expression are not written
};

inline constexpr int kWFETRingSize = 512;
inline constexpr int kWFETMergeSize = 100;
inline constexpr int kWFETFrameSamples = 16;
// The distance of a frame that had nothing to compare.
inline constexpr double kWFETNoDistance = 2e30;

// One local maximum or minimum of the filtered signal.
struct WFETExtremum {
    uint16_t kind;    // 1 maximum, 0 minimum
    int32_t interval; // samples from the previous extremum
    int32_t lag;      // <= 0: position relative to the current reference, in samples
    double value;     // filtered sample at the extremum
    double before;    // filtered sample just before
    double after;     // filtered sample just after
    double swing;     // |value - previous extremum's value|
    double force;     // prominence: min(swing, next extremum's swing)
};

// One entry of the merged list that compares the extrema behind the reference with those
// behind a candidate.
struct WFETMergeEntry {
    uint16_t kind;
    uint16_t stream; // 0 behind the reference, 1 behind the candidate
    int32_t time;    // <= 0, relative to the start of its own sequence
    double force;
    double value;
};

// The engine's only output. noteOff and noteOn are written on every frame; velocity, bend and
// expression only where the note decision says so, and clamped to their ranges on every frame.
struct WFETMidiOut {
    int16_t noteOff;    // -1 none
    int16_t noteOn;     // -1 none
    int16_t velocity;   // 0..127
    int16_t bend;       // 0..16383, 8192 centre
    int16_t expression; // 0..127
};

struct WFETState {
    WFETExtremum extrema[kWFETRingSize]; // ring of recent extrema, indices modulo 512
    double sampleRate;
    uint32_t head;      // index of the newest extremum
    uint32_t sinceLast; // samples since the newest extremum
    TiaRBiquadFloat* lowPass;
    TiaRBiquadFloat* highPass;
    double peakEnv; // fast envelope of the filtered signal
    double slowEnv; // smoothed copy of peakEnv
    double prev2;
    double prev1;
    int32_t minPeriod[2]; // shortest period searched (idle, sounding)
    int32_t maxPeriod[2]; // longest period searched (idle, sounding)
    double minFreq;
    double maxFreq;
    double refPitch;
    double frequency; // -1 = no pitch
    double period;
    double distance;
    double inputLevel; // peak envelope of the unfiltered input
    int16_t note;
    int16_t noteVelocity;
    int16_t sounding; // selects the parameter pair: 0 idle, 1 sounding
    int16_t bendRange;
    double mismatchPenalty[2];
    double lagWeight[2];
    double maxDistance[2];
    double minLevel[2];
    double ampTolerance[2];
    double filterSpan;
    int32_t periods[2];
    double continuityWeight;
    int32_t samplesSinceCalc;
    int16_t medianOn;
    int16_t confirmOn;
    int16_t voiced;
    int16_t prevVoiced;
    double freqHistory[3]; // newest first
    double decisionFreq;
    int16_t levelMode;
    double levelFloorDb;
    double levelCeilDb;

    // Bookkeeping of this implementation, outside the engine's model: it lets a frame skip
    // refreshing forces and lags that cannot have changed since the previous frame.
    uint32_t extremaWritten; // extrema recorded so far, wrapping
    uint32_t forcesAt;       // extremaWritten when the forces were last refreshed
    uint32_t lagsAt;         // extremaWritten when the lags were last written
    int32_t lagsRef;         // the reference they were written for, -1 for none
};

// Creates a record with every default in place and both filters tuned; null when the record
// cannot be allocated.
WFETState* WFETBegProcess();

// Stores one parameter; WFET_ACCEPTED or WFET_REJECTED (nothing changed).
int32_t WFETSet(WFETState* s, int16_t code, double value);

// Consumes byteCount / 2 samples (an odd last byte is ignored).
void WFETProcess(WFETState* s, const int16_t* samples, uint32_t byteCount);

// Runs one analysis frame and the note decision, filling `out`.
void WFETCalc(WFETState* s, WFETMidiOut* out);

// Releases the high-pass filter, the low-pass filter, then the record. Null is ignored.
void WFETEndProcess(WFETState* s);

// The steps of one frame, exposed for tests.
void WFETForces(WFETState* s);
int32_t WFETRef(WFETState* s);
void WFETTimeLags(WFETState* s, uint32_t ref);
int32_t WFETCopy(WFETState* s, WFETMergeEntry* list, uint32_t ref, uint32_t cand);
double WFETDistCalc(WFETState* s, const WFETMergeEntry* list, int32_t count, uint32_t lag,
                    double envelope);
double WFETInterpol(const WFETExtremum* e);
void WFETMIDI(WFETState* s, WFETMidiOut* out);
