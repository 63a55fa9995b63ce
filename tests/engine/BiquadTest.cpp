#include "TiaRBiquadFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>

namespace {

struct FilterDeleter {
    void operator()(TiaRBiquadFloat* f) const { TiaRBiquadFloat_End(f); }
};
using FilterPtr = std::unique_ptr<TiaRBiquadFloat, FilterDeleter>;

FilterPtr MakeFilter(int16_t type, double frequency, double gainDb = 0) {
    FilterPtr f(TiaRBiquadFloat_Begin());
    TiaRBiquadFloat_Set(f.get(), TIARBQ_TYPE, type);
    TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, frequency);
    TiaRBiquadFloat_Set(f.get(), TIARBQ_GAIN_DB, gainDb);
    return f;
}

// Steady-state amplitude of a unit sine through the filter.
double Gain(int16_t type, double frequency, double gainDb = 0) {
    FilterPtr f = MakeFilter(type, 1000, gainDb);
    double peak = 0;
    for (int i = 0; i < 44100; ++i) {
        const double y = TiaRBiquadFloat_ProcessSample(
            f.get(), std::sin(2 * std::numbers::pi * frequency * i / 44100));
        peak = i > 22050 ? std::max(peak, std::fabs(y)) : 0;
    }
    return peak;
}

TEST(Biquad, LowPassAt1760HasTheCookbookCoefficientsWithTheWiderAlpha) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 1760);
    EXPECT_NEAR(f->omega, 0.25076, 1e-5);
    const double alpha = std::sin(f->omega) * std::sinh(0.5);
    const double expected = (1 - std::cos(f->omega)) / 2 / (1 + alpha);
    EXPECT_DOUBLE_EQ(f->feed0, expected);
    EXPECT_DOUBLE_EQ(f->feed1, 2 * expected);
    EXPECT_DOUBLE_EQ(f->feed2, expected);
    EXPECT_DOUBLE_EQ(f->feedback1, 2 * std::cos(f->omega) / (1 + alpha));
    EXPECT_DOUBLE_EQ(f->feedback2, -(1 - alpha) / (1 + alpha));
    // A unit impulse yields feed0 first; a parameter change keeps the history.
    EXPECT_EQ(TiaRBiquadFloat_ProcessSample(f.get(), 1.0), f->feed0);
    TiaRBiquadFloat_Set(f.get(), TIARBQ_FREQ, 900);
    EXPECT_EQ(f->x1, 1.0);
    EXPECT_NE(f->y1, 0);
}

TEST(Biquad, ValuesOutsideTheirRangeAndUnknownCodesChangeNothing) {
    FilterPtr f = MakeFilter(TIARBQ_LOWPASS, 1760);
    const TiaRBiquadFloat before = *f;
    const std::pair<int16_t, double> rejected[] = {
        {TIARBQ_FREQ, 0},     {TIARBQ_FREQ, -5},       {TIARBQ_FREQ, std::nan("")},
        {TIARBQ_SLOPE, 1.01}, {TIARBQ_GAIN_DB, 120.5}, {TIARBQ_Q, 0}};
    for (auto [code, value] : rejected) {
        EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), code, value), TIARBQ_BAD_VALUE)
            << code << " " << value;
    }
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), 0, 1), TIARBQ_UNKNOWN_CODE);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), 9, 1), TIARBQ_UNKNOWN_CODE);
    EXPECT_EQ(std::memcmp(&before.frequency, &f->frequency, sizeof(double) * 6), 0);
    EXPECT_EQ(f->feed0, before.feed0);
    // The limits themselves are accepted where the range is inclusive.
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_SLOPE, 1), TIARBQ_STORED);
    EXPECT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_GAIN_DB, 120), TIARBQ_STORED);
    EXPECT_DOUBLE_EQ(f->gain, 1000);
}

TEST(Biquad, BandwidthGivesTheCookbookAlphaExactly) {
    FilterPtr f = MakeFilter(TIARBQ_BANDPASS, 2000);
    ASSERT_EQ(TiaRBiquadFloat_Set(f.get(), TIARBQ_BANDWIDTH, 1.0), TIARBQ_STORED);
    const double w = f->omega;
    const double cookbook = std::sin(w) * std::sinh(std::numbers::ln2 / 2 * w / std::sin(w));
    EXPECT_NEAR(std::sin(w) * std::sinh(1 / (2 * f->q)), cookbook, 1e-9);
}

TEST(Biquad, EveryResponsePassesAndStopsWhereItsTypeSays) {
    EXPECT_NEAR(Gain(TIARBQ_LOWPASS, 50), 1, 0.01);
    EXPECT_NEAR(Gain(TIARBQ_LOWPASS, 10000), 0, 0.02);
    EXPECT_NEAR(Gain(9, 10000), 0, 0.02) << "an unknown type is a low-pass";
    EXPECT_NEAR(Gain(TIARBQ_HIGHPASS, 50), 0, 0.01);
    EXPECT_NEAR(Gain(TIARBQ_HIGHPASS, 15000), 1, 0.05);
    EXPECT_NEAR(Gain(TIARBQ_BANDPASS, 1000), 1, 0.01);
    EXPECT_NEAR(Gain(TIARBQ_NOTCH, 1000), 0, 0.01);
    EXPECT_NEAR(Gain(TIARBQ_PEAK, 1000, 12), 4, 0.05);
    EXPECT_NEAR(Gain(TIARBQ_LOWSHELF, 30, 12), 4, 0.1);
    EXPECT_NEAR(Gain(TIARBQ_LOWSHELF, 15000, 12), 1, 0.05);
    EXPECT_NEAR(Gain(TIARBQ_HIGHSHELF, 30, 12), 1, 0.05);
    EXPECT_NEAR(Gain(TIARBQ_HIGHSHELF, 15000, 12), 4, 0.15);
}

} // namespace
