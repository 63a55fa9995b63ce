#include "NodeRig.h"

#include <gtest/gtest.h>

using namespace vocato;
using Sets = std::vector<std::pair<int16_t, double>>;
using vocato::test::NodeRig;

namespace {

double F(float v) {
    return static_cast<double>(v);
}

} // namespace

TEST(Presets, TheDefaultPresetFeedsAFreshEngineInTheFixedOrder) {
    NodeRig rig;
    const Sets expected = {
        {WFET_SAMPLE_RATE, 44100.0},   {WFET_FILTER_SPAN, 1.0},
        {WFET_MAX_NOTE, 72.0},         {WFET_MIN_NOTE, 36.0},
        {WFET_BEND_RANGE, 4.0},        {WFET_START_LEVEL_DB, -24.0},
        {WFET_HOLD_LEVEL_DB, -36.0},   {WFET_START_DISTANCE, F(0.1f)},
        {WFET_HOLD_DISTANCE, F(0.3f)}, {WFET_LAG_WEIGHT, F(0.1f)},
        {WFET_START_PERIODS, 2.0},     {WFET_HOLD_PERIODS, 2.0},
        {WFET_CONTINUITY, F(0.1f)},    {WFET_MEDIAN, 0.0},
        {WFET_CONFIRM, 0.0},           {WFET_LEVEL_CEIL_DB, -6.0},
        {WFET_LEVEL_MODE, 2.0},
    };
    EXPECT_EQ(rig.script->sets, expected);
}

TEST(Presets, AnUnknownNumberKeepsEveryValueButStillRestartsTheEngine) {
    NodeRig rig;
    rig.Set(PARAM_PRESET, 6);
    rig.Set(PARAM_LEVEL_CEIL_DB, -3.0f);
    rig.Set(PARAM_TRANSPOSE, 2.0f);
    rig.Set(PARAM_PROGRAM, 40);
    rig.node->Maintain();
    for (int32_t preset : {0, 21}) {
        const void* before = rig.script->lastConfigured;
        rig.script->sets.clear();
        rig.Set(PARAM_PRESET, preset);
        EXPECT_NE(rig.script->lastConfigured, before) << "a fresh tracker takes over";
        EXPECT_EQ(rig.script->sets.size(), 17u);
        EXPECT_EQ(rig.Get(PARAM_MIDI_MIN), 55.0f);
        EXPECT_EQ(rig.Get(PARAM_LEVEL_CEIL_DB), -3.0f);
        EXPECT_EQ(rig.Get(PARAM_TRANSPOSE), 2.0f);
        EXPECT_EQ(rig.Get<int32_t>(PARAM_PROGRAM), 40);
    }
}

TEST(Presets, RetiredTrackersAreFreedOffTheNodeThreadAndSparesRebuilt) {
    NodeRig rig;
    const int destroyed = rig.script->destroyed;
    rig.Set(PARAM_PRESET, 2);
    rig.Set(PARAM_PRESET, 3);
    EXPECT_EQ(rig.script->destroyed, destroyed) << "nothing is freed on the node thread";
    rig.node->Maintain();
    EXPECT_EQ(rig.script->destroyed, destroyed + 2);
    const int created = rig.script->created;
    rig.node->Maintain();
    EXPECT_EQ(rig.script->created, created) << "the stock is full again";
}

TEST(Presets, TheEngineRunsAtTheConnectedRateAndARefusedRateLeavesTheNodeNotReady) {
    NodeRig rig;
    rig.script->sets.clear();
    rig.ConnectAndStart(1, 48000.0);
    ASSERT_FALSE(rig.script->sets.empty());
    EXPECT_EQ(rig.script->sets.front(), (std::pair<int16_t, double>{WFET_SAMPLE_RATE, 48000.0}));
    EXPECT_EQ(rig.script->sets.size(), 17u);
    rig.Feed(std::vector<int16_t>(16));
    EXPECT_EQ(rig.node->MidiClock(), 4000.0 + 16000.0 / 48000.0);
    rig.script->sets.clear();
    rig.Set(PARAM_PRESET, 3);
    EXPECT_EQ(rig.script->sets.front().second, 48000.0);

    rig.node->Disconnected({1, 1}, {0, 0});
    rig.Connect(1, 2000.0);
    EXPECT_FALSE(rig.node->EngineReady());
    rig.node->Disconnected({1, 1}, {0, 0});
    rig.Connect(1, 8000.0);
    EXPECT_TRUE(rig.node->EngineReady());
}

TEST(Presets, TheMedianAndConfirmSwitchesReachEveryFreshEngine) {
    NodeRig rig({.window = false, .median = 1, .confirm = 1});
    rig.Set(PARAM_PRESET, 15);
    size_t median = 0;
    size_t confirm = 0;
    for (const auto& [code, value] : rig.script->sets) {
        median += code == WFET_MEDIAN && value == 1.0;
        confirm += code == WFET_CONFIRM && value == 1.0;
    }
    EXPECT_EQ(median, 2u);
    EXPECT_EQ(confirm, 2u);
}
