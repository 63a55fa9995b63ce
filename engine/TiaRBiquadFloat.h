// Second-order recursive filter (biquad) with the seven responses of R. Bristow-Johnson's
// Audio EQ Cookbook, run one sample at a time in direct form I.
//
// Two deliberate deviations from the cookbook, kept because the pitch engine was tuned with them:
//  - alpha is always sin(w) * sinh(1 / (2Q)); with Q = 1 that is 0.5211 sin(w), not 0.5 sin(w).
//    A bandwidth (code 5) is turned into the Q that makes this alpha equal the cookbook's
//    bandwidth form exactly.
//  - the shelves use beta * sin(w), beta = sqrt((A^2 + 1) / S - (A - 1)^2), and ignore Q.
#pragma once

#include <cstdint>

// Response types (values of `type`); any other value computes the low-pass.
enum : int16_t {
    TIARBQ_LOWPASS = 1,
    TIARBQ_HIGHPASS = 2,
    TIARBQ_BANDPASS = 3, // constant 0 dB peak gain
    TIARBQ_NOTCH = 4,
    TIARBQ_PEAK = 5,
    TIARBQ_LOWSHELF = 6,
    TIARBQ_HIGHSHELF = 7,
};

// Parameter codes of TiaRBiquadFloat_Set.
enum : int16_t {
    TIARBQ_RATE = 1,      // sample rate in Hz, any value, stored truncated
    TIARBQ_FREQ = 2,      // centre or cut-off in Hz, v > 0
    TIARBQ_Q = 3,         // quality factor, v > 0 [default 1]
    TIARBQ_SLOPE = 4,     // shelf slope S, 0 < v <= 1 [default 1]
    TIARBQ_BANDWIDTH = 5, // octaves, v > 0; uses the current omega, so set the frequency first
    TIARBQ_GAIN = 6,      // linear amplitude gain A, v > 0 [default 1]
    TIARBQ_GAIN_DB = 7,   // -120 <= v <= 120; A = 10^(v / 40)
    TIARBQ_TYPE = 8,      // response type, any value, stored truncated [default 1]
};

// Results of TiaRBiquadFloat_Set.
enum : int32_t {
    TIARBQ_STORED = 1,
    TIARBQ_BAD_VALUE = 4,    // nothing changed
    TIARBQ_UNKNOWN_CODE = 5, // nothing changed
};

struct TiaRBiquadFloat {
    int32_t sampleRate;
    int16_t type;
    double frequency;
    double omega; // frequency * 2 pi / sampleRate
    double gain;
    double q;
    double slope;
    double x1, x2; // previous inputs, newest first
    double y1, y2; // previous outputs, newest first
    double feedback1; // -a1 / a0
    double feedback2; // -a2 / a0
    double feed0;     // b0 / a0
    double feed1;     // b1 / a0
    double feed2;     // b2 / a0
};

// Allocates a filter with the defaults (44100 Hz, low-pass, 1000 Hz, Q 1, gain 1, slope 1);
// null when memory is exhausted.
TiaRBiquadFloat* TiaRBiquadFloat_Begin();

// Stores one parameter and recomputes every coefficient; the history is kept.
int32_t TiaRBiquadFloat_Set(TiaRBiquadFloat* f, int16_t code, double v);

// Filters one sample. No branches, no allocation.
double TiaRBiquadFloat_ProcessSample(TiaRBiquadFloat* f, double x);

// Kept for interface completeness: it processes nothing and nothing calls it.
void TiaRBiquadFloat_ProcessBuffer(TiaRBiquadFloat* f);

// Releases the filter; null is ignored.
void TiaRBiquadFloat_End(TiaRBiquadFloat* f);
