#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using enginetest::EnginePtr;
using enginetest::NewEngine;

TEST(EngineSetup, AFreshRecordHoldsTheDefaults) {
    EnginePtr s = NewEngine();
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->head, 511u);
    for (const WFETExtremum& e : s->extrema) {
        ASSERT_EQ(e.kind, 0);
        ASSERT_EQ(e.interval, 0);
        ASSERT_EQ(e.value, 0);
        ASSERT_EQ(e.force, 0);
    }
    EXPECT_EQ(s->frequency, -1);
    EXPECT_EQ(s->minPeriod[0], 25);
    EXPECT_EQ(s->minPeriod[1], 25);
    EXPECT_EQ(s->maxPeriod[0], 801);
    EXPECT_EQ(s->maxPeriod[1], 801);
    EXPECT_EQ(s->lowPass->type, TIARBQ_LOWPASS);
    EXPECT_EQ(s->lowPass->frequency, 1760);
    EXPECT_EQ(s->highPass->type, TIARBQ_HIGHPASS);
    EXPECT_EQ(s->highPass->frequency, 55);
    EXPECT_EQ(s->lowPass->sampleRate, 44100);
    EXPECT_EQ(s->levelMode, WFET_LEVEL_EXPRESSION);
    EXPECT_EQ(s->bendRange, 2);
}

struct RangeCase {
    int16_t code;
    double value;
    int32_t expected;
};

void PrintTo(const RangeCase& c, std::ostream* os) {
    *os << "code " << c.code << " = " << c.value << " -> " << c.expected;
}

class ParameterRanges : public ::testing::TestWithParam<RangeCase> {};

TEST_P(ParameterRanges, AcceptOrRejectAtTheirLimits) {
    EnginePtr s = NewEngine();
    const RangeCase c = GetParam();
    EXPECT_EQ(WFETSet(s.get(), c.code, c.value), c.expected)
        << "code " << c.code << " value " << c.value;
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

INSTANTIATE_TEST_SUITE_P(
    EveryCode, ParameterRanges,
    ::testing::Values(RangeCase{WFET_SAMPLE_RATE, 4000, 0}, RangeCase{WFET_SAMPLE_RATE, 200000, 0},
                      RangeCase{WFET_SAMPLE_RATE, 4000.5, 1}, RangeCase{WFET_SAMPLE_RATE, 199999, 1},
                      RangeCase{WFET_SAMPLE_RATE, kNaN, 0}, RangeCase{WFET_MIN_FREQ, 22050, 0},
                      RangeCase{WFET_MIN_FREQ, 22049.9, 1}, RangeCase{WFET_MIN_FREQ, 0, 0},
                      RangeCase{WFET_MAX_FREQ, 22050, 0}, RangeCase{WFET_MIN_NOTE, 10, 0},
                      RangeCase{WFET_MIN_NOTE, 80, 0}, RangeCase{WFET_MIN_NOTE, 10.01, 1},
                      RangeCase{WFET_MAX_NOTE, 35, 0}, RangeCase{WFET_MAX_NOTE, 105, 0},
                      RangeCase{WFET_MAX_NOTE, 104.9, 1}, RangeCase{WFET_REF_PITCH, 0, 0},
                      RangeCase{WFET_REF_PITCH, 1000, 0}, RangeCase{WFET_BEND_RANGE, 1, 1},
                      RangeCase{WFET_BEND_RANGE, 36, 0}, RangeCase{WFET_BEND_RANGE, 0.99, 0},
                      RangeCase{WFET_LEVEL_MODE, 0, 1}, RangeCase{WFET_LEVEL_MODE, 3, 1},
                      RangeCase{WFET_LEVEL_MODE, 3.01, 0}, RangeCase{WFET_LEVEL_FLOOR_DB, 0, 0},
                      RangeCase{WFET_LEVEL_CEIL_DB, 0, 1}, RangeCase{WFET_LEVEL_CEIL_DB, 0.01, 0},
                      RangeCase{WFET_START_LEVEL, 30000, 0}, RangeCase{WFET_HOLD_LEVEL, 0, 0},
                      RangeCase{WFET_START_LEVEL_DB, -120, 0}, RangeCase{WFET_START_LEVEL_DB, 0, 1},
                      RangeCase{WFET_HOLD_LEVEL_DB, 0.5, 0}, RangeCase{WFET_START_DISTANCE, 2, 0},
                      RangeCase{WFET_HOLD_DISTANCE, 0, 0}, RangeCase{WFET_START_PERIODS, 9, 0},
                      RangeCase{WFET_START_PERIODS, 1, 1}, RangeCase{WFET_HOLD_PERIODS, 29.9, 1},
                      RangeCase{WFET_LAG_WEIGHT, 1, 0}, RangeCase{WFET_FILTER_SPAN, 0.1, 0},
                      RangeCase{WFET_FILTER_SPAN, 3, 0}, RangeCase{WFET_CONTINUITY, 0, 1},
                      RangeCase{WFET_CONTINUITY, 1, 0}, RangeCase{WFET_MEDIAN, 0.5, 0},
                      RangeCase{WFET_MEDIAN, 2, 0}, RangeCase{WFET_MEDIAN, 1, 1},
                      RangeCase{WFET_CONFIRM, 0, 1}, RangeCase{WFET_CONFIRM, kNaN, 0}));

TEST(EngineSetup, FrequencyBoundsDeriveThePeriodBoundsFromTheCurrentRate) {
    EnginePtr s = NewEngine();
    ASSERT_EQ(WFETSet(s.get(), WFET_MIN_FREQ, 22049.9), 1);
    EXPECT_EQ(s->maxPeriod[0], 2);
    EXPECT_EQ(s->maxPeriod[1], 2);

    ASSERT_EQ(WFETSet(s.get(), WFET_MIN_NOTE, 36), 1);
    EXPECT_NEAR(s->minFreq, 65.4064, 1e-4);
    EXPECT_EQ(s->maxPeriod[0], 674);
    EXPECT_EQ(s->maxPeriod[1], 674);

    // The rate alone does not revise the bounds: they still reflect 44100 Hz.
    ASSERT_EQ(WFETSet(s.get(), WFET_SAMPLE_RATE, 96000), 1);
    EXPECT_EQ(s->maxPeriod[0], 674);
    EXPECT_EQ(s->lowPass->sampleRate, 96000);
    EXPECT_EQ(s->highPass->sampleRate, 96000);
}

TEST(EngineSetup, FilterSpanMovesBothCutOffs) {
    EnginePtr s = NewEngine();
    ASSERT_EQ(WFETSet(s.get(), WFET_FILTER_SPAN, 2.0), 1);
    EXPECT_EQ(s->highPass->frequency, 110);
    EXPECT_EQ(s->lowPass->frequency, 3520);
    ASSERT_EQ(WFETSet(s.get(), WFET_MAX_FREQ, 1000), 1);
    EXPECT_EQ(s->lowPass->frequency, 2000);
    EXPECT_EQ(s->minPeriod[0], 44);
}

TEST(EngineSetup, TruncatingCodesStoreWholeNumbers) {
    EnginePtr s = NewEngine();
    EXPECT_EQ(WFETSet(s.get(), WFET_BEND_RANGE, 3.9), 1);
    EXPECT_EQ(s->bendRange, 3);
    EXPECT_EQ(WFETSet(s.get(), WFET_HOLD_PERIODS, 7.99), 1);
    EXPECT_EQ(s->periods[1], 7);
    EXPECT_EQ(WFETSet(s.get(), WFET_LEVEL_MODE, 1.5), 1);
    EXPECT_EQ(s->levelMode, 1);
}

TEST(EngineSetup, LevelCodesConvertBetweenDecibelsAndSampleUnits) {
    EnginePtr s = NewEngine();
    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL, 50), 1);
    EXPECT_EQ(s->minLevel[1], 50);
    EXPECT_NEAR(s->levelFloorDb, -56.33, 0.01);

    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL_DB, -36), 1);
    EXPECT_EQ(s->levelFloorDb, -36);
    EXPECT_NEAR(s->minLevel[1], 519.34, 0.01);

    // 0 dB is a valid hold level but not a valid floor: the floor keeps its value.
    ASSERT_EQ(WFETSet(s.get(), WFET_HOLD_LEVEL_DB, 0), 1);
    EXPECT_EQ(s->minLevel[1], 32768);
    EXPECT_EQ(s->levelFloorDb, -36);

    ASSERT_EQ(WFETSet(s.get(), WFET_START_LEVEL_DB, -6.0206), 1);
    EXPECT_NEAR(s->minLevel[0], 16384, 0.1);
}

TEST(EngineSetup, ScaledCodesStoreTheirScaledValues) {
    EnginePtr s = NewEngine();
    WFETSet(s.get(), WFET_START_DISTANCE, 0.3);
    WFETSet(s.get(), WFET_HOLD_DISTANCE, 0.3);
    WFETSet(s.get(), WFET_LAG_WEIGHT, 0.1);
    WFETSet(s.get(), WFET_CONTINUITY, 0.5);
    EXPECT_DOUBLE_EQ(s->maxDistance[0], 0.1);
    EXPECT_DOUBLE_EQ(s->maxDistance[1], 0.15);
    EXPECT_DOUBLE_EQ(s->lagWeight[0], 0.001);
    EXPECT_DOUBLE_EQ(s->lagWeight[1], 0.001);
    EXPECT_DOUBLE_EQ(s->continuityWeight, 10000);
}

TEST(EngineSetup, UnknownCodesAreRejectedAndChangeNothing) {
    EnginePtr s = NewEngine();
    for (int16_t code : {10, 25, 29, 43, 1000, -1}) {
        EXPECT_EQ(WFETSet(s.get(), code, 1.0), WFET_REJECTED) << code;
    }
    EXPECT_EQ(s->sampleRate, 44100);
    EXPECT_EQ(s->minFreq, 55);
    EXPECT_EQ(s->maxFreq, 1760);
    EXPECT_EQ(s->bendRange, 2);
    EXPECT_EQ(s->minLevel[0], 500);
    EXPECT_EQ(s->maxDistance[1], 0.5);
    EXPECT_EQ(s->periods[0], 4);
    EXPECT_EQ(s->continuityWeight, 1000);
}

} // namespace
