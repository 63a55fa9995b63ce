#include "NodeRig.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

namespace midi = vocato::media::midi;
using namespace vocato;
using Sets = std::vector<std::pair<int16_t, double>>;
using vocato::test::NodeRig;

namespace {

struct Broadcasts final : ParameterListener {
    void ParameterChanged(int64_t when, int32_t id, const void* value, size_t) noexcept override {
        float f;
        std::memcpy(&f, value, 4);
        seen.push_back({when, id, f});
    }
    struct Seen {
        int64_t when;
        int32_t id;
        float asFloat;
    };
    std::vector<Seen> seen;
};

double F(float v) {
    return static_cast<double>(v);
}

} // namespace

TEST(Parameters, AChangeReachesTheEngineMovesItsTimeAndIsBroadcastButNoChangeOrABadOneDoesNot) {
    NodeRig rig;
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.script->sets.clear();
    for (int32_t id : kParameterIds) {
        EXPECT_EQ(rig.When(id), 0) << id;
    }
    int64_t when;
    float v = 9.0f;
    size_t size = 3;
    EXPECT_EQ(rig.node->GetParameterValue(PARAM_BEND_RANGE, &when, &v, &size), media::kNoMemory);
    size = 4;
    EXPECT_EQ(rig.node->GetParameterValue(22, &when, &v, &size), media::kError);
    v = 9.0f;
    rig.node->SetParameterValue(22, 0, &v, 4);
    rig.node->SetParameterValue(PARAM_TRANSPOSE, 0, &v, 3);
    rig.node->RunEvents();
    EXPECT_EQ(rig.Get(PARAM_TRANSPOSE), 0.0f);
    rig.Set(PARAM_HOLD_DISTANCE, 0.3f);
    EXPECT_TRUE(rig.script->sets.empty());
    EXPECT_TRUE(listener.seen.empty());
    EXPECT_EQ(rig.When(PARAM_HOLD_DISTANCE), 0);

    rig.clock.Set(20'000'000);
    rig.Set(PARAM_HOLD_DISTANCE, 0.7f);
    EXPECT_EQ(rig.script->sets, (Sets{{WFET_HOLD_DISTANCE, static_cast<double>(0.7f)}}));
    EXPECT_EQ(rig.When(PARAM_HOLD_DISTANCE), 20'000'000);
    ASSERT_EQ(listener.seen.size(), 1u);
    EXPECT_EQ(listener.seen[0].id, PARAM_HOLD_DISTANCE);
    EXPECT_EQ(listener.seen[0].when, 20'000'000);

    rig.Set(PARAM_LAG_WEIGHT, 5.0f); // refused by the engine (0 < v < 1), kept all the same
    EXPECT_EQ(rig.Get(PARAM_LAG_WEIGHT), 5.0f);
    EXPECT_EQ(listener.seen.size(), 2u);
}

TEST(Parameters, TheNoteRangeTruncatesAndComparesAsAnInteger) {
    NodeRig rig;
    rig.script->sets.clear();
    rig.Set(PARAM_MIDI_MIN, 47.9f);
    EXPECT_EQ(rig.script->sets, (Sets{{WFET_MIN_NOTE, 47.0}}));
    EXPECT_EQ(rig.window.midiMin.load(), 47.0f);
    const int64_t changed = rig.When(PARAM_MIDI_MIN);
    rig.clock.Set(30'000'000);
    rig.Set(PARAM_MIDI_MIN, 47.2f);
    EXPECT_EQ(rig.script->sets.size(), 1u);
    EXPECT_EQ(rig.When(PARAM_MIDI_MIN), changed);
    EXPECT_EQ(rig.Get(PARAM_MIDI_MIN), 47.0f);
}

TEST(Parameters, TranspositionSilencesRestoresExpressionAndTellsTheWindow) {
    NodeRig rig({.channel = 5});
    rig.sink.Clear();
    rig.Set(PARAM_TRANSPOSE, 12.0f);
    const auto& sent = rig.sink.sent;
    ASSERT_EQ(sent.size(), 17u);
    EXPECT_EQ(sent[15], midi::ControlChange(16, 123, 0));
    EXPECT_EQ(sent[16], midi::ControlChange(5, 11, 127));
    EXPECT_EQ(rig.window.transpose.load(), 12.0f);
}

TEST(Parameters, AChangeWaitsUntilItIsDueAndChangesFromAnyThreadApplyInTimeOrder) {
    NodeRig rig;
    const int64_t now = rig.clock.NowMicros();
    std::thread gui([&] {
        const float late = 3.0f;
        const float early = 2.0f;
        rig.node->SetParameterValue(PARAM_TRANSPOSE, now + 2000, &late, 4);
        rig.node->SetParameterValue(PARAM_TRANSPOSE, now + 1000, &early, 4);
    });
    gui.join();
    for (const auto& [at, expected] :
         {std::pair{now, 0.0f}, {now + 1000, 2.0f}, {now + 2000, 3.0f}}) {
        rig.clock.Set(at);
        rig.node->RunEvents();
        EXPECT_EQ(rig.Get(PARAM_TRANSPOSE), expected) << at;
    }
}

TEST(Parameters, FemaleVoiceBroadcastsThirteenValuesAnnouncesItselfAndRepeatingItDoesNothing) {
    NodeRig rig({.channel = 4});
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.sink.Clear();
    rig.Set(PARAM_PRESET, 3);
    EXPECT_EQ(rig.Get(PARAM_MIDI_MIN), 48.0f);
    EXPECT_EQ(rig.Get(PARAM_MIDI_MAX), 78.0f);
    EXPECT_EQ(rig.Get(PARAM_BEND_RANGE), 4.0f);
    EXPECT_EQ(rig.sink.sent, (std::vector<media::MidiMessage>{
                                 midi::ControlChange(4, 11, 127), midi::ControlChange(1, 101, 0),
                                 midi::ControlChange(1, 100, 0), midi::ControlChange(1, 6, 4),
                                 midi::ControlChange(1, 38, 0)}));
    EXPECT_EQ(rig.window.midiMin.load(), 48.0f);
    EXPECT_EQ(rig.window.midiMax.load(), 78.0f);
    EXPECT_EQ(rig.script->sets.back(), (std::pair<int16_t, double>{WFET_LEVEL_MODE, 2.0}));
    std::vector<int32_t> ids;
    for (const auto& s : listener.seen) {
        ids.push_back(s.id);
    }
    EXPECT_EQ(ids, (std::vector<int32_t>{45, 29, 47, 49, 25, 27, 21, 23, 33, 35, 37, 41, 43}));
    EXPECT_EQ(listener.seen[2].asFloat, 48.0f);
    const int created = rig.script->created;
    rig.Set(PARAM_PRESET, 3);
    EXPECT_EQ(listener.seen.size(), 13u);
    EXPECT_EQ(rig.script->created, created);
}

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

TEST(Presets, AnUnknownNumberKeepsEveryValueButStillRestartsTheEngineWithTheSwitchesOn) {
    NodeRig rig({.median = 1, .confirm = 1});
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
        EXPECT_EQ(rig.script->sets[13], (std::pair<int16_t, double>{WFET_MEDIAN, 1.0}));
        EXPECT_EQ(rig.script->sets[14], (std::pair<int16_t, double>{WFET_CONFIRM, 1.0}));
        EXPECT_EQ(rig.Get(PARAM_MIDI_MIN), 55.0f);
        EXPECT_EQ(rig.Get(PARAM_LEVEL_CEIL_DB), -3.0f);
        EXPECT_EQ(rig.Get(PARAM_TRANSPOSE), 2.0f);
        EXPECT_EQ(rig.Get(PARAM_PROGRAM), 40);
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
    rig.Connect(1, 48000.0);
    ASSERT_FALSE(rig.script->sets.empty());
    EXPECT_EQ(rig.script->sets.front(), (std::pair<int16_t, double>{WFET_SAMPLE_RATE, 48000.0}));
    EXPECT_EQ(rig.script->sets.size(), 17u);
    rig.node->Disconnected({1, 1}, {0, 0});
    rig.Connect(1, 2000.0);
    EXPECT_FALSE(rig.node->EngineReady());
    rig.node->Disconnected({1, 1}, {0, 0});
    rig.Connect(1, 8000.0);
    EXPECT_TRUE(rig.node->EngineReady());
}
