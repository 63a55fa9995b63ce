#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using enginetest::EnginePtr;
using enginetest::NewEngine;

TEST(EngineSetup, EveryCodeAcceptsOrRejectsAtItsLimits) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        int16_t code;
        double value;
        int32_t expected;
    };
    const Case cases[] = {
        {WFET_SAMPLE_RATE, 4000, 0},     {WFET_SAMPLE_RATE, 200000, 0},  {WFET_SAMPLE_RATE, 4000.5, 1},
        {WFET_SAMPLE_RATE, 199999, 1},   {WFET_SAMPLE_RATE, nan, 0},     {WFET_MIN_FREQ, 22050, 0},
        {WFET_MAX_FREQ, 0, 0},           {WFET_MIN_NOTE, 10, 0},         {WFET_MIN_NOTE, 80, 0},
        {WFET_MAX_NOTE, 35, 0},          {WFET_MAX_NOTE, 104.9, 1},      {WFET_REF_PITCH, 1000, 0},
        {WFET_BEND_RANGE, 1, 1},         {WFET_BEND_RANGE, 36, 0},       {WFET_LEVEL_MODE, 3, 1},
        {WFET_LEVEL_MODE, 3.01, 0},      {WFET_LEVEL_FLOOR_DB, 0, 0},    {WFET_LEVEL_CEIL_DB, 0, 1},
        {WFET_START_LEVEL, 30000, 0},    {WFET_HOLD_LEVEL, 0, 0},        {WFET_START_LEVEL_DB, -120, 0},
        {WFET_HOLD_LEVEL_DB, 0.5, 0},    {WFET_START_DISTANCE, 2, 0},    {WFET_START_PERIODS, 9, 0},
        {WFET_HOLD_PERIODS, 29.9, 1},    {WFET_LAG_WEIGHT, 1, 0},        {WFET_FILTER_SPAN, 0.1, 0},
        {WFET_CONTINUITY, 0, 1},         {WFET_CONTINUITY, 1, 0},        {WFET_MEDIAN, 0.5, 0},
        {WFET_MEDIAN, 1, 1},             {WFET_CONFIRM, nan, 0},         {25, 1, 0},
        {43, 1, 0},                      {-1, 1, 0}};
    for (const Case& c : cases) {
        EnginePtr s = NewEngine();
        EXPECT_EQ(WFETSet(s.get(), c.code, c.value), c.expected) << c.code << " = " << c.value;
    }
}

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
