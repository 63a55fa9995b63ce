#include "EngineTestSupport.h"

#include <gtest/gtest.h>

namespace {

using enginetest::EnginePtr;
using enginetest::NewEngine;

TEST(EngineSetup, FrequencyBoundsDeriveThePeriodBoundsFromTheCurrentRate) {
    EnginePtr s = NewEngine();
    ASSERT_EQ(WFETSet(s.get(), WFET_MIN_FREQ, 22049.9), 1);
    EXPECT_EQ(s->maxPeriod[1], 2);
    ASSERT_EQ(WFETSet(s.get(), WFET_MIN_NOTE, 36), 1);
    EXPECT_NEAR(s->minFreq, 65.4064, 1e-4);
    EXPECT_EQ(s->maxPeriod[0], 674);
    EXPECT_EQ(s->maxPeriod[1], 674);
    // The rate alone does not revise the bounds.
    ASSERT_EQ(WFETSet(s.get(), WFET_SAMPLE_RATE, 96000), 1);
    EXPECT_EQ(s->maxPeriod[0], 674);
    EXPECT_EQ(s->highPass->sampleRate, 96000);
    // The span scales both cut-offs, and later bounds too.
    ASSERT_EQ(WFETSet(s.get(), WFET_FILTER_SPAN, 2.0), 1);
    EXPECT_NEAR(s->highPass->frequency, 2 * 65.4064, 1e-3);
    EXPECT_EQ(s->lowPass->frequency, 3520);
    ASSERT_EQ(WFETSet(s.get(), WFET_MAX_FREQ, 1000), 1);
    EXPECT_EQ(s->lowPass->frequency, 2000);
    EXPECT_EQ(s->minPeriod[0], 96);
}

TEST(EngineSetup, CodesStoreTruncatedScaledOrConvertedValues) {
    EnginePtr s = NewEngine();
    WFETSet(s.get(), WFET_BEND_RANGE, 3.9);
    WFETSet(s.get(), WFET_HOLD_PERIODS, 7.99);
    WFETSet(s.get(), WFET_START_DISTANCE, 0.3);
    WFETSet(s.get(), WFET_HOLD_DISTANCE, 0.3);
    WFETSet(s.get(), WFET_LAG_WEIGHT, 0.1);
    WFETSet(s.get(), WFET_CONTINUITY, 0.5);
    EXPECT_EQ(s->bendRange, 3);
    EXPECT_EQ(s->periods[1], 7);
    EXPECT_DOUBLE_EQ(s->maxDistance[0], 0.1);
    EXPECT_DOUBLE_EQ(s->maxDistance[1], 0.15);
    EXPECT_DOUBLE_EQ(s->lagWeight[1], 0.001);
    EXPECT_DOUBLE_EQ(s->continuityWeight, 10000);

    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL, 50), 1);
    EXPECT_NEAR(s->levelFloorDb, -56.33, 0.01);
    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL_DB, -36), 1);
    EXPECT_EQ(s->levelFloorDb, -36);
    EXPECT_NEAR(s->minLevel[1], 519.34, 0.01);
    // 0 dB is a valid hold level but not a valid floor: the floor keeps its value.
    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL_DB, 0), 1);
    EXPECT_EQ(s->minLevel[1], 32768);
    EXPECT_EQ(s->levelFloorDb, -36);
}

} // namespace
