#include "TiaRBiquadFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

struct FilterDeleter {
    void operator()(TiaRBiquadFloat* f) const { TiaRBiquadFloat_End(f); }
};
using FilterPtr = std::unique_ptr<TiaRBiquadFloat, FilterDeleter>;

FilterPtr MakeFilter(int16_t type, double frequency) {
    FilterPtr f(TiaRBiquadFloat_Begin());
    TiaRBiquadFloat_Set(f.get(), TIARBQ_TYPE, type);
    TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, frequency);
    return f;
}

// Steady-state amplitude of a sine through the filter, measured after the transient.
double Gain(TiaRBiquadFloat* f, double frequency) {
    double peak = 0;
    for (int i = 0; i < 44100; ++i) {
        const double y =
            TiaRBiquadFloat_ProcessSample(f, std::sin(2 * std::numbers::pi * frequency * i / 44100));
        if (i > 22050) {
            peak = std::max(peak, std::fabs(y));
        }
    }
    return peak;
}

TEST(Biquad, LowPassAt1760HasTheCookbookCoefficientsWithTheWiderAlpha) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 1760);
    EXPECT_NEAR(f->omega, 0.25076, 1e-5);
    const double alpha = std::sin(f->omega) * std::sinh(0.5);
    const double expected = (1 - std::cos(f->omega)) / 2 / (1 + alpha);
    EXPECT_DOUBLE_EQ(f->feed0, expected);
    EXPECT_DOUBLE_EQ(f->feed2, expected);
    EXPECT_DOUBLE_EQ(f->feed1, 2 * expected);
    EXPECT_DOUBLE_EQ(f->feedback1, 2 * std::cos(f->omega) / (1 + alpha));
    EXPECT_DOUBLE_EQ(f->feedback2, -(1 - alpha) / (1 + alpha));
}

TEST(Biquad, AUnitImpulseIntoAFreshLowPassYieldsFeed0First) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 1760);
    EXPECT_EQ(TiaRBiquadFloat_ProcessSample(f.get(), 1.0), f->feed0);
    const double second = TiaRBiquadFloat_ProcessSample(f.get(), 0.0);
    EXPECT_DOUBLE_EQ(second, f->feed1 + f->feedback1 * f->feed0);
}

TEST(Biquad, RejectedValuesChangeNothing) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 1760);
    const TiaRBiquadFloat before = *f;
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, 0), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, -5), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, std::nan("")), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_SLOPE, 1.01), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_GAIN_DB, 120.5), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_Q, 0), TIARBQ_BAD_VALUE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), 0, 1), TIARBQ_UNKNOWN_CODE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), 9, 1), TIARBQ_UNKNOWN_CODE);
    EXPECT_EQ(f->frequency, before.frequency);
    EXPECT_EQ(f->slope, before.slope);
    EXPECT_EQ(f->gain, before.gain);
    EXPECT_EQ(f->feed0, before.feed0);
}

TEST(Biquad, RangeLimitsAreInclusiveWhereWritten) {
    FilterPtr f = MakeFilter(TIARBQ_HIGHSHELF, 1000);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_SLOPE, 1), TIARBQ_STORED);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_GAIN_DB, 120), TIARBQ_STORED);
    EXPECT_DOUBLE_EQ(f->gain, 1000);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_GAIN_DB, -120), TIARBQ_STORED);
}

TEST(Biquad, UnknownTypeComputesLowPassCoefficients) {
    FilterPtr low = MakeFilter(TIARBQ_LOWPASS, 500);
    FilterPtr odd = MakeFilter(9, 500);
    EXPECT_EQ(odd->type, 9);
    EXPECT_EQ(odd->feed0, low->feed0);
    EXPECT_EQ(odd->feedback2, low->feedback2);
}

TEST(Biquad, HistorySurvivesAParameterChange) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 500);
    TiaRBiquadFloat_ProcessSample(f.get(), 1000);
    TiaRBiquadFloat_ProcessSample(f.get(), -200);
    TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, 900);
    EXPECT_EQ(f->x1, -200);
    EXPECT_EQ(f->x2, 1000);
    EXPECT_NE(f->y1, 0);
}

TEST(Biquad, BandwidthGivesTheCookbookAlphaExactly) {
    FilterPtr f = MakeFilter(TIARBQ_BANDPASS, 2000);
    ASSERT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_BANDWIDTH, 1.0), TIARBQ_STORED);
    const double w = f->omega;
    const double cookbook = std::sin(w) * std::sinh(std::numbers::ln2 / 2 * 1.0 * w / std::sin(w));
    const double alpha = std::sin(w) * std::sinh(1 / (2 * f->q));
    EXPECT_NEAR(alpha, cookbook, 1e-9);
}

TEST(Biquad, ResponsesPassAndStopWhereTheirTypesSay) {
    FilterPtr low = MakeFilter(TIARBQ_LOWPASS, 1000);
    EXPECT_NEAR(Gain(low.get(), 50), 1.0, 0.01);
    EXPECT_LT(Gain(low.get(), 10000), 0.02);

    FilterPtr high = MakeFilter(TIARBQ_HIGHPASS, 1000);
    EXPECT_LT(Gain(high.get(), 50), 0.01);
    EXPECT_NEAR(Gain(high.get(), 15000), 1.0, 0.05);

    FilterPtr band = MakeFilter(TIARBQ_BANDPASS, 1000);
    EXPECT_NEAR(Gain(band.get(), 1000), 1.0, 0.01);

    FilterPtr notch = MakeFilter(TIARBQ_NOTCH, 1000);
    EXPECT_LT(Gain(notch.get(), 1000), 0.01);

    FilterPtr peak = MakeFilter(TIARBQ_PEAK, 1000);
    TiaRBiquadFloat_Set(peak.get(), TIARBQ_GAIN_DB, 12); // A = 2: +12 dB at the centre
    EXPECT_NEAR(Gain(peak.get(), 1000), 4.0, 0.05);

    FilterPtr lowShelf = MakeFilter(TIARBQ_LOWSHELF, 1000);
    TiaRBiquadFloat_Set(lowShelf.get(), TIARBQ_GAIN_DB, 12);
    EXPECT_NEAR(Gain(lowShelf.get(), 30), 4.0, 0.1);
    EXPECT_NEAR(Gain(lowShelf.get(), 15000), 1.0, 0.05);

    FilterPtr highShelf = MakeFilter(TIARBQ_HIGHSHELF, 1000);
    TiaRBiquadFloat_Set(highShelf.get(), TIARBQ_GAIN_DB, 12);
    EXPECT_NEAR(Gain(highShelf.get(), 30), 1.0, 0.05);
    EXPECT_NEAR(Gain(highShelf.get(), 15000), 4.0, 0.15);
}

TEST(Biquad, EndIgnoresNull) { TiaRBiquadFloat_End(nullptr); }

} // namespace
