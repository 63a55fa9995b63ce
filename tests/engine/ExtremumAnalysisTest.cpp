#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace {

using namespace enginetest;

void Feed(WFETState* s, const std::vector<int16_t>& samples) {
    WFETProcess(s, samples.data(), static_cast<uint32_t>(samples.size() * 2));
}

// A fresh record fed `samples` through filters that pass them unchanged, so that a test
// controls the filtered signal exactly.
EnginePtr FedUnfiltered(const std::vector<int16_t>& samples) {
    EnginePtr s = NewEngine();
    for (TiaRBiquadFloat* f : {s->lowPass, s->highPass}) {
        f->feed0 = 1;
        f->feed1 = f->feed2 = f->feedback1 = f->feedback2 = 0;
    }
    Feed(s.get(), samples);
    return s;
}

// One period of 100 samples of a 441 Hz sine at 44.1 kHz, repeated exactly.
std::vector<int16_t> ExactSine441(int periods) {
    std::vector<int16_t> out;
    for (int p = 0; p < periods; ++p) {
        for (int i = 0; i < 100; ++i) {
            out.push_back(static_cast<int16_t>(std::lround(10000 * std::sin(2 * std::numbers::pi * i / 100))));
        }
    }
    return out;
}

TEST(ExtremumRing, TurnsOfTheSignalBecomeAlternatingExtrema) {
    EnginePtr s = NewEngine();
    for (const WFETExtremum& e : s->extrema) {
        ASSERT_TRUE(e.kind == 0 && e.interval == 0 && e.value == 0 && e.force == 0);
    }
    Feed(s.get(), {-1000}); // a fresh record: a maximum of 0 lands in entry 0
    EXPECT_EQ(s->head, 0u);
    EXPECT_EQ(s->extrema[0].kind, 1);
    EXPECT_EQ(s->extrema[0].value, 0);
    EXPECT_EQ(s->extrema[0].swing, 0);
    EXPECT_LT(s->extrema[0].after, 0);

    s = FedUnfiltered({5, 3, 3, 1}); // a fall with a level step: minimum, then maximum on the step
    ASSERT_EQ(s->head, 2u);
    EXPECT_EQ(s->extrema[1].kind, 0);
    EXPECT_EQ(s->extrema[1].swing, 2);
    EXPECT_EQ(s->extrema[2].kind, 1);
    EXPECT_EQ(s->extrema[2].interval, 1);
    EXPECT_EQ(s->extrema[2].before, 3);
    EXPECT_EQ(s->extrema[2].after, 1);

    s = FedUnfiltered({1, 2, 2, 3}); // a rise with a level step: nothing
    EXPECT_EQ(s->head, 511u);
    const int16_t odd[2] = {100, 200};
    WFETProcess(s.get(), odd, 3); // an odd trailing byte is ignored
    EXPECT_EQ(s->samplesSinceCalc, 5);
}

TEST(PitchAnalysis, SilenceFindsNoReferenceAndStaysUnvoiced) {
    EnginePtr s = VoiceEngine();
    const Trace t = RunEngine(s.get(), std::vector<int16_t>(44100, 0));
    EXPECT_TRUE(t.events.empty());
    EXPECT_EQ(s->distance, kWFETNoDistance);
    EXPECT_EQ(s->frequency, -1);
    EXPECT_EQ(s->head, 511u);
}

// Without a lag penalty an exact repetition scores 0 at lags 100, 200, 300, ...: on equal
// scores the nearer candidate stays.
TEST(PitchAnalysis, TheSearchExaminesBothPeriodBoundsStopsBeyondTheLongestAndKeepsTheNearerOnATie) {
    struct Case {
        int32_t shortest, longest;
        double lagWeight, expectedPeriod;
    };
    for (const Case c :
         {Case{100, 801, 0.001, 100}, Case{25, 100, 0.001, 100}, Case{101, 801, 0.001, 200},
          Case{25, 99, 0.001, 0}, Case{25, 801, 0, 100}}) {
        SCOPED_TRACE(::testing::Message()
                     << c.shortest << ".." << c.longest << " weight " << c.lagWeight);
        EnginePtr s = FedUnfiltered(ExactSine441(20));
        s->minPeriod[0] = c.shortest;
        s->maxPeriod[0] = c.longest;
        s->lagWeight[0] = c.lagWeight;
        WFETMidiOut out{};
        WFETCalc(s.get(), &out);
        if (c.expectedPeriod == 0) {
            EXPECT_EQ(s->distance, kWFETNoDistance);
            EXPECT_EQ(s->frequency, -1);
        } else {
            EXPECT_EQ(s->period, c.expectedPeriod);
            EXPECT_NEAR(s->frequency, 44100 / c.expectedPeriod, 0.5);
            EXPECT_EQ(s->distance, 0) << "an exact repetition";
        }
    }
}

TEST(PitchAnalysis, IdenticalSequencesMergeIntoAlternatingStreamsWithNoTimeDifference) {
    EnginePtr s = FedUnfiltered(ExactSine441(20));
    WFETForces(s.get());
    const int32_t ref = WFETRef(s.get());
    ASSERT_GE(ref, 0);
    WFETTimeLags(s.get(), static_cast<uint32_t>(ref));
    const uint32_t cand = (static_cast<uint32_t>(ref) - 2) & 511;
    EXPECT_EQ(s->extrema[cand].lag, -100);

    WFETMergeEntry list[kWFETMergeSize];
    const int32_t n = WFETCopy(s.get(), list, static_cast<uint32_t>(ref), cand);
    const int entries = n + 1;
    EXPECT_EQ(entries % 2, 0);
    EXPECT_GE(entries, 4);
    for (int i = 0; i < entries; ++i) {
        EXPECT_EQ(list[i].stream, i % 2) << i;
        if (i % 2 == 1) {
            EXPECT_EQ(list[i].time, list[i - 1].time);
            EXPECT_EQ(list[i].kind, list[i - 1].kind);
        }
    }
    // The comparison covers periods[0] (4 by default) times the lag.
    EXPECT_EQ(list[entries - 2].time, -400);
    EXPECT_EQ(WFETDistCalc(s.get(), list, n, 100, s->peakEnv), 0);
}

TEST(PitchAnalysis, UnpairedExtremaCostTheirForceTimesThePenalty) {
    EnginePtr s = NewEngine();
    const WFETMergeEntry list[4] = {{1, 0, 0, 2.0, 10}, {0, 0, -5, 3.0, 4}, {1, 0, 0, 1, 10}, {0, 1, -7, 1, 6}};
    // Pair 0 shares a stream: (2 + 3) x 4 = 20. Pair 1 spans both: |10 - 6| = 4, |0 + 7| = 7.
    const double d = WFETDistCalc(s.get(), list, 3, 9, 2.0);
    EXPECT_DOUBLE_EQ(d, 24.0 / 2.0 / 3 + 7.0 / (10 * 3));
}

} // namespace
