// The precise tracker takes the engine's parameter codes with the engine's own range rules,
// so a preset configures either tracker; these tests hold the two side by side.
#include "PreciseTestSupport.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace precisetest;

TEST(PreciseSettings, AcceptsAndRejectsExactlyWhatTheClassicEngineDoes) {
    const double values[] = {-1e9, -200, -120, -119.9, -36, -1, -0.5, 0, 0.05, 0.1, 0.10001, 0.5, 1, 1.5,
                             2, 2.9, 3, 3.9, 8.9, 9, 10, 10.5, 29.9, 30, 35, 36, 79.9, 80, 104.9, 105,
                             999, 1000, 4000, 4000.5, 22049.9, 22050, 29999, 30000, 199999, 200000, 1e12,
                             std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()};
    for (int16_t code = 0; code <= 43; ++code) {
        if (code >= 10 && code <= 29) continue;
        for (double v : values) {
            // Fresh trackers: some codes' ranges depend on the rate set before.
            auto classic = vocato::MakeClassicTracker();
            auto precise = vocato::MakePreciseTracker();
            ASSERT_TRUE(classic && precise);
            EXPECT_EQ(precise->Set(code, v), classic->Set(code, v)) << "code " << code << " value " << v;
        }
    }
}

TEST(PreciseSettings, FrequencyRangeFollowsTheRateSetBeforeIt) {
    auto classic = vocato::MakeClassicTracker();
    auto precise = vocato::MakePreciseTracker();
    for (auto* t : {classic.get(), precise.get()}) {
        ASSERT_EQ(t->Set(WFET_SAMPLE_RATE, 8000.5), WFET_ACCEPTED);
    }
    for (double f : {3999.0, 4000.0, 4000.5}) {
        EXPECT_EQ(precise->Set(WFET_MAX_FREQ, f), classic->Set(WFET_MAX_FREQ, f)) << f;
        EXPECT_EQ(precise->Set(WFET_MIN_FREQ, f), classic->Set(WFET_MIN_FREQ, f)) << f;
    }
}

TEST(PreciseSettings, UnknownCodesChangeNothing) {
    auto tracker = MakeTracker({.minNote = 48, .maxNote = 72});
    EXPECT_EQ(tracker->Set(25, 1.0), WFET_REJECTED);
    EXPECT_EQ(tracker->Set(43, 1.0), WFET_REJECTED);
    const TrackRun run = Track(*tracker, Render({.frequency = NoteFrequency(60), .seconds = 0.5}));
    EXPECT_EQ(NoteNumbers(run), std::vector<int>{60});
}

// The converter sets the rate first and the range after it; any order and any rate must
// still give a working tracker, because the analysis derives its sizes lazily.
TEST(PreciseSettings, TracksAtOtherRatesAndAfterARangeChangeMidStream) {
    for (double rate : {8000.0, 22050.0, 48000.0, 96000.0, 192000.0}) {
        auto tracker = MakeTracker({.rate = rate, .minNote = 40, .maxNote = 76});
        const TrackRun run = Track(*tracker, Render({.frequency = NoteFrequency(57), .seconds = 0.5}, rate));
        ASSERT_EQ(NoteNumbers(run), std::vector<int>{57}) << rate;
        EXPECT_NEAR(run.notes[0].meanPitch, 57.0, 0.05) << rate;
    }
    auto tracker = MakeTracker({.minNote = 60, .maxNote = 84});
    const std::vector<int16_t> low = Render({.frequency = NoteFrequency(45), .seconds = 0.5});
    tracker->Set(WFET_MIN_NOTE, 36);
    const TrackRun run = Track(*tracker, low);
    EXPECT_EQ(NoteNumbers(run), std::vector<int>{45});
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
