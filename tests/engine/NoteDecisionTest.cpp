#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace enginetest;

const double kLevelAtMinus21Db = 32768 * std::pow(10.0, -21.0 / 20);

// A record ready for the note decision: each Frame is a good match at the given frequency
// and level unless the test says otherwise.
class NoteDecision : public ::testing::Test {
protected:
    void SetUp() override {
        s = NewEngine();
        WFETSet(s.get(), WFET_LEVEL_FLOOR_DB, -36);
        WFETSet(s.get(), WFET_LEVEL_CEIL_DB, -6);
        out = {-1, -1, 0, 8192, 0};
    }
    void Frame(double frequency, double level = 10000, double distance = 0.01,
               double period = 100) {
        s->frequency = frequency;
        s->distance = distance;
        s->inputLevel = level;
        s->period = period;
        WFETMIDI(s.get(), &out);
    }

    EnginePtr s;
    WFETMidiOut out{};
};

TEST_F(NoteDecision, ANoteStartsOnTheNearestNoteRoundingHalfUp) {
    for (auto [pitch, expected] : {std::pair{69.0, 69}, {70.0, 70}, {69.5, 70}, {69.49, 69}}) {
        SetUp();
        Frame(NoteFrequency(pitch));
        EXPECT_EQ(out.noteOn, expected) << pitch;
        EXPECT_EQ(s->sounding, 1);
    }
    EXPECT_EQ(out.bend, 10198); // 69.49 on 69: 0.49 x 8191 / 2 + 8192
}

TEST_F(NoteDecision, BendCoversTheRangeAndRetriggersOnlyBeyondIt) {
    WFETSet(s.get(), WFET_BEND_RANGE, 2);
    Frame(440);
    ASSERT_EQ(out.noteOn, 69);
    for (auto [pitch, bend] : {std::pair<double, int16_t>{71, 16383}, {67, 1}, {69.5, 10239}}) {
        Frame(NoteFrequency(pitch));
        EXPECT_EQ(out.noteOn, -1) << pitch;
        EXPECT_EQ(out.noteOff, -1) << pitch;
        EXPECT_EQ(out.bend, bend) << pitch;
    }
    Frame(NoteFrequency(71.01));
    EXPECT_EQ(out.noteOff, 69);
    EXPECT_EQ(out.noteOn, 71);
    EXPECT_EQ(out.velocity, 127);
    EXPECT_EQ(out.bend, 8232);
    EXPECT_EQ(s->note, 71);
}

TEST_F(NoteDecision, ANoteStartBoundsTheSearchToTheBendRangeAroundItsPeriod) {
    WFETSet(s.get(), WFET_BEND_RANGE, 2);
    Frame(441, 10000, 0.01, 100);
    EXPECT_EQ(s->maxPeriod[1], 112);
    EXPECT_EQ(s->minPeriod[1], 89);
    // A re-trigger keeps them.
    Frame(NoteFrequency(75), 10000, 0.01, 60);
    EXPECT_EQ(out.noteOn, 75);
    EXPECT_EQ(s->maxPeriod[1], 112);
}

TEST_F(NoteDecision, TheLevelMapsLinearlyInDecibelsBetweenFloorAndCeiling) {
    for (auto [level, expression] : {std::pair<double, int16_t>{kLevelAtMinus21Db, 63},
                                     {32767, 127},
                                     {16423, 127},
                                     {32768 * 0.0158, 0},
                                     {2, 0}}) {
        SetUp();
        WFETSet(s.get(), WFET_START_LEVEL, 1);
        Frame(440, level);
        EXPECT_EQ(out.expression, expression) << level;
        EXPECT_EQ(out.velocity, 127);
    }
}

TEST_F(NoteDecision, EachLevelModeWritesVelocityAndExpressionAsItsTableSays) {
    WFETSet(s.get(), WFET_LEVEL_MODE, WFET_LEVEL_VELOCITY);
    Frame(440, kLevelAtMinus21Db);
    EXPECT_EQ(out.velocity, 63);
    EXPECT_EQ(out.expression, 127);

    SetUp();
    WFETSet(s.get(), WFET_LEVEL_MODE, WFET_LEVEL_RELATIVE);
    Frame(440, kLevelAtMinus21Db);
    EXPECT_EQ(out.velocity, 63);
    EXPECT_EQ(out.expression, 96);
    s->noteVelocity = 64;
    const double levelFor64 = 32768 * std::pow(10.0, (-36 + 30 * 64.5 / 127) / 20);
    Frame(440, levelFor64);
    EXPECT_EQ(out.velocity, 64);
    EXPECT_EQ(out.expression, 96); // 64 x 96 / 64
    s->noteVelocity = 10;          // too soft an attack to be relative to
    Frame(440, levelFor64);
    EXPECT_EQ(out.expression, 127);

    SetUp();
    WFETSet(s.get(), WFET_LEVEL_MODE, WFET_LEVEL_NONE);
    out.velocity = 33;
    out.expression = 44;
    Frame(440, kLevelAtMinus21Db);
    EXPECT_EQ(out.noteOn, 69);
    EXPECT_EQ(out.velocity, 33);
    EXPECT_EQ(out.expression, 44);
}

TEST_F(NoteDecision, AnUnvoicedFrameEndsTheNoteAndOnlyClampsTheOtherFields) {
    Frame(440);
    out.bend = 9000;
    out.velocity = 50;
    out.expression = 70;
    Frame(440, 10000, 1.5); // distance too large
    EXPECT_EQ(out.noteOff, 69);
    EXPECT_EQ(out.noteOn, -1);
    EXPECT_EQ(s->frequency, -1);
    EXPECT_EQ(out.bend, 9000);
    EXPECT_EQ(out.velocity, 50);
    EXPECT_EQ(out.expression, 70);
    out.bend = 20000;
    out.velocity = 300;
    out.expression = -5;
    Frame(440, 10000, 1.5);
    EXPECT_EQ(out.noteOff, -1);
    EXPECT_EQ(out.bend, 16383);
    EXPECT_EQ(out.velocity, 127);
    EXPECT_EQ(out.expression, 0);
}

TEST_F(NoteDecision, StartingNeedsMoreLevelAndACloserMatchThanHolding) {
    // Defaults: level 500 and distance 0.2 to start, 50 and 0.5 to hold.
    Frame(440, 200);
    Frame(440, 10000, 0.3);
    EXPECT_EQ(s->sounding, 0);
    Frame(440, 600, 0.1);
    EXPECT_EQ(out.noteOn, 69);
    Frame(440, 200, 0.3);
    EXPECT_EQ(out.noteOff, -1);
    Frame(440, 40);
    EXPECT_EQ(out.noteOff, 69);
}

TEST_F(NoteDecision, ConfirmationDelaysTheStartByOneFrame) {
    WFETSet(s.get(), WFET_CONFIRM, 1);
    Frame(440);
    EXPECT_EQ(out.noteOn, -1);
    EXPECT_EQ(s->frequency, -1);
    EXPECT_EQ(s->voiced, 1);
    Frame(440);
    EXPECT_EQ(out.noteOn, 69);
}

TEST_F(NoteDecision, TheMedianOfThreeFramesDecides) {
    WFETSet(s.get(), WFET_MEDIAN, 1);
    s->freqHistory[0] = s->freqHistory[1] = s->freqHistory[2] = -1;
    Frame(100);
    EXPECT_EQ(out.noteOn, -1); // median of -1, -1, 100
    Frame(200);
    EXPECT_EQ(s->decisionFreq, 100); // median of -1, 100, 200
    EXPECT_EQ(out.noteOn, 43);
    Frame(150);
    EXPECT_EQ(s->decisionFreq, 150);
}

} // namespace
