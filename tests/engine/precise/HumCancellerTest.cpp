// The mains hum canceller: it takes hum away once it has heard it on its own, and never
// touches an input whose quiet floor holds none.
#include "precise/HumCanceller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>
#include <utility>

namespace {

using vocato::precise::HumCanceller;

constexpr double kRate = 8820; // the rate a voice's range is analysed at

double Hum(double mains, size_t i) {
    double hum = 0.0;
    for (int k = 1; k <= 6; ++k) {
        hum += 300.0 * std::sin(2 * std::numbers::pi * k * mains * i / kRate + k);
    }
    return hum;
}

double Note(double frequency, size_t i) {
    double note = 0.0;
    for (int h = 1; h <= 3; ++h) {
        note += 8000.0 / h * std::sin(2 * std::numbers::pi * h * frequency * i / kRate);
    }
    return note;
}

TEST(HumCanceller, HumHeardAloneIsTakenOutOfTheNotesAfterIt) {
    // Under a note 28 dB louder, whose partials 20-30 Hz from the hum's leak into the estimate
    // followed over half a second; at the nominal frequency, and a little off it, as the mains
    // drift, when the upper partials lag the estimate and go out less well.
    for (auto [mains, downDb] : {std::pair{50.0, 12.0}, {60.0, 12.0}, {50.02, 8.0}, {59.97, 8.0}}) {
        HumCanceller canceller;
        canceller.Configure(kRate);
        const size_t alone = static_cast<size_t>(0.5 * kRate);
        const size_t end = static_cast<size_t>(4.0 * kRate);
        double humPower = 0.0, errorPower = 0.0;
        for (size_t i = 0; i < end; ++i) {
            const double note = i < alone ? 0.0 : Note(220, i);
            const double out = canceller.Run(note + Hum(mains, i));
            if (i >= end - static_cast<size_t>(kRate)) {
                humPower += Hum(mains, i) * Hum(mains, i);
                errorPower += (out - note) * (out - note);
            }
        }
        EXPECT_TRUE(canceller.Heard()) << mains;
        EXPECT_LT(10 * std::log10(errorPower / humPower), -downDb) << mains;
    }
}

TEST(HumCanceller, InputWithoutHumIsNeverTouched) {
    // Notes on multiples of the mains, over digital silence or over a broad noise floor.
    std::mt19937 generator(5);
    std::normal_distribution<double> noise(0.0, 30.0);
    const std::function<double(size_t)> floors[] = {[](size_t) { return 0.0; },
                                                    [&](size_t) { return noise(generator); }};
    for (const auto& floor : floors) {
        HumCanceller canceller;
        canceller.Configure(kRate);
        for (size_t i = 0; i < static_cast<size_t>(6 * kRate); ++i) {
            const double seconds = i / kRate;
            const bool playing = std::fmod(seconds, 1.5) > 0.5;
            const double x = floor(i) + (playing ? Note(seconds < 3 ? 100 : 60, i) : 0.0);
            ASSERT_EQ(canceller.Run(x), x) << seconds;
        }
        EXPECT_FALSE(canceller.Heard());
        EXPECT_EQ(canceller.Amplitude(), 0.0);
    }
}

} // namespace
