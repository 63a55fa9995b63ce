// The precise tracker takes the engine's parameter codes with the engine's own range rules,
// so a preset configures either tracker.
#include "PreciseTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace precisetest;

TEST(PreciseSettings, AcceptsAndRejectsExactlyWhatTheClassicEngineDoes) {
    const double values[] = {
        -1e9, -200,   -120,    -119.9, -36,   -1,    -0.5,   0,      0.05, 0.1,          0.10001,
        0.5,  1,      1.5,     2,      2.9,   3,     3.9,    8.9,    9,    10,           10.5,
        29.9, 30,     35,      36,     79.9,  80,    104.9,  105,    999,  1000,         3999,
        4000, 4000.5, 22049.9, 22050,  29999, 30000, 199999, 200000, 1e12, std::nan(""), HUGE_VAL};
    // Some codes' ranges depend on the rate set before: none, or one with a fractional Nyquist.
    for (double rate : {0.0, 8000.5}) {
        for (int16_t code = 0; code <= 43; ++code) {
            if (code >= 10 && code <= 29) {
                continue;
            }
            for (double v : values) {
                auto classic = vocato::MakeClassicTracker();
                auto precise = vocato::MakePreciseTracker();
                ASSERT_TRUE(classic && precise);
                if (rate > 0) {
                    ASSERT_EQ(classic->Set(WFET_SAMPLE_RATE, rate), WFET_ACCEPTED);
                    ASSERT_EQ(precise->Set(WFET_SAMPLE_RATE, rate), WFET_ACCEPTED);
                }
                EXPECT_EQ(precise->Set(code, v), classic->Set(code, v))
                    << "code " << code << " value " << v << " after rate " << rate;
            }
        }
    }
}

// The analysis derives its sizes lazily, so any rate and a range change mid-stream still give
// a working tracker; an unknown code changes nothing.
TEST(PreciseSettings, TracksAtOtherRatesAndAfterARangeChangeMidStream) {
    for (double rate : {8000.0, 22050.0, 48000.0, 96000.0, 192000.0}) {
        auto tracker = MakeTracker({.rate = rate, .minNote = 40, .maxNote = 76});
        const TrackRun run =
            Track(*tracker, Render({.frequency = NoteFrequency(57), .seconds = 0.5}, rate));
        ASSERT_EQ(run.NoteNumbers(), Notes{57}) << rate;
        EXPECT_NEAR(run.notes[0].meanPitch, 57.0, 0.05) << rate;
    }
    auto tracker = MakeTracker({.minNote = 60, .maxNote = 84});
    Track(*tracker,
          Concat({Render({.frequency = NoteFrequency(72), .seconds = 0.2}), Silence(0.1)}));
    tracker->Set(WFET_MIN_NOTE, 36);
    EXPECT_EQ(tracker->Set(25, 1.0), WFET_REJECTED);
    const TrackRun run = Track(*tracker, Render({.frequency = NoteFrequency(45), .seconds = 0.5}));
    EXPECT_EQ(run.NoteNumbers(), Notes{45});
}

TEST(PreciseSettings, DecisionDelayFollowsTheRangeAndTheRate) {
    auto low = MakeTracker({.minNote = 28, .maxNote = 56});
    auto high = MakeTracker({.minNote = 60, .maxNote = 96});
    auto fast = MakeTracker({.rate = 96000, .minNote = 60, .maxNote = 96});
    EXPECT_GT(low->DecisionDelaySamples(), high->DecisionDelaySamples());
    EXPECT_GT(fast->DecisionDelaySamples(), high->DecisionDelaySamples());
    // Even for the lowest range the delay stays below 50 ms at 44.1 kHz.
    EXPECT_LT(low->DecisionDelaySamples(), 2205u);
}

} // namespace
