#include "TiaRBiquadFloat.h"

#include "SafeConvert.h"

#include <cmath>
#include <new>

using vocato::TruncToward0;

namespace {

// The constants are written out rather than taken from <numbers>: the coefficients must match
// other builds of this filter to the last bit.
constexpr double kTwoPi = 6.283185308;
constexpr double kLn2 = 0.6931471806;
constexpr double kPi = 3.1415926535;

struct Raw {
    double b0, b1, b2, a0, a1, a2;
};

Raw ShelfCoefficients(double A, double c, double s, double beta) {
    return {A * ((A + 1) - (A - 1) * c + beta * s),
            2 * A * ((A - 1) - (A + 1) * c),
            A * ((A + 1) - (A - 1) * c - beta * s),
            (A + 1) + (A - 1) * c + beta * s,
            -2 * ((A + 1) * c + (A - 1)),
            (A + 1) + (A - 1) * c - beta * s};
}

Raw RawCoefficients(const TiaRBiquadFloat& f) {
    const double alpha = std::sin(f.omega) * std::sinh(1 / (2 * f.q));
    const double c = std::cos(f.omega);
    const double s = std::sin(f.omega);
    const double A = f.gain;
    switch (f.type) {
    case TIARBQ_HIGHPASS:
        return {(1 + c) * 0.5, -1 - c, (1 + c) * 0.5, 1 + alpha, -2 * c, 1 - alpha};
    case TIARBQ_BANDPASS:
        return {alpha, 0, -alpha, 1 + alpha, -2 * c, 1 - alpha};
    case TIARBQ_NOTCH:
        return {1, -2 * c, 1, 1 + alpha, -2 * c, 1 - alpha};
    case TIARBQ_PEAK:
        return {1 + alpha * A, -2 * c, 1 - alpha * A, 1 + alpha / A, -2 * c, 1 - alpha / A};
    case TIARBQ_LOWSHELF: {
        const double beta = std::sqrt((A * A + 1) / f.slope - (A - 1) * (A - 1));
        return ShelfCoefficients(A, c, s, beta);
    }
    case TIARBQ_HIGHSHELF: {
        // The low shelf evaluated at the mirrored frequency, with b1 and a1 negated: that is
        // the cookbook's high shelf.
        const double beta = std::sqrt((A * A + 1) / f.slope - (A - 1) * (A - 1));
        Raw r = ShelfCoefficients(A, std::cos(kPi - f.omega), std::sin(kPi - f.omega), beta);
        r.b1 = -r.b1;
        r.a1 = -r.a1;
        return r;
    }
    default:
        return {(1 - c) * 0.5, 1 - c, (1 - c) * 0.5, 1 + alpha, -2 * c, 1 - alpha};
    }
}

void ComputeCoefficients(TiaRBiquadFloat* f) {
    const Raw r = RawCoefficients(*f);
    f->feedback1 = -r.a1 / r.a0;
    f->feedback2 = -r.a2 / r.a0;
    f->feed0 = r.b0 / r.a0;
    f->feed1 = r.b1 / r.a0;
    f->feed2 = r.b2 / r.a0;
}

} // namespace

TiaRBiquadFloat* TiaRBiquadFloat_Begin() {
    auto* f = new (std::nothrow) TiaRBiquadFloat{};
    if (f == nullptr) {
        return nullptr;
    }
    f->sampleRate = 44100;
    f->type = TIARBQ_LOWPASS;
    f->frequency = 1000;
    f->gain = 1.0;
    f->q = 1.0;
    f->slope = 1.0;
    // Before any rate or frequency is set, omega and the coefficients describe the defaults
    // (a 1 kHz low-pass), so a first Set of the type alone already yields a sane filter.
    f->omega = f->frequency * kTwoPi / f->sampleRate;
    ComputeCoefficients(f);
    return f;
}

int32_t TiaRBiquadFloat_Set(TiaRBiquadFloat* f, int16_t code, double v) {
    switch (code) {
    case TIARBQ_RATE:
        f->sampleRate = TruncToward0<int32_t>(v);
        f->omega = f->frequency * kTwoPi / f->sampleRate;
        break;
    case TIARBQ_FREQ:
        if (!(v > 0)) {
            return TIARBQ_BAD_VALUE;
        }
        f->frequency = v;
        f->omega = v * kTwoPi / f->sampleRate;
        break;
    case TIARBQ_Q:
        if (!(v > 0)) {
            return TIARBQ_BAD_VALUE;
        }
        f->q = v;
        break;
    case TIARBQ_SLOPE:
        if (!(v > 0 && v <= 1)) {
            return TIARBQ_BAD_VALUE;
        }
        f->slope = v;
        break;
    case TIARBQ_BANDWIDTH:
        if (!(v > 0)) {
            return TIARBQ_BAD_VALUE;
        }
        f->q = std::sin(f->omega) / (v * f->omega * kLn2);
        break;
    case TIARBQ_GAIN:
        if (!(v > 0)) {
            return TIARBQ_BAD_VALUE;
        }
        f->gain = v;
        break;
    case TIARBQ_GAIN_DB:
        if (!(v >= -120 && v <= 120)) {
            return TIARBQ_BAD_VALUE;
        }
        f->gain = std::pow(10.0, v / 40);
        break;
    case TIARBQ_TYPE:
        f->type = TruncToward0<int16_t>(v);
        break;
    default:
        return TIARBQ_UNKNOWN_CODE;
    }
    ComputeCoefficients(f);
    return TIARBQ_STORED;
}

double TiaRBiquadFloat_ProcessSample(TiaRBiquadFloat* f, double x) {
    // Direct form I, summed left to right in exactly this order.
    const double y =
        f->feed0 * x + f->feed1 * f->x1 + f->feed2 * f->x2 + f->feedback1 * f->y1 + f->feedback2 * f->y2;
    f->x2 = f->x1;
    f->x1 = x;
    f->y2 = f->y1;
    f->y1 = y;
    return y;
}

void TiaRBiquadFloat_ProcessBuffer(TiaRBiquadFloat*) {}

void TiaRBiquadFloat_End(TiaRBiquadFloat* f) { delete f; }
