#include "NodeRig.h"

#include <gtest/gtest.h>

#include <thread>

namespace midi = vocato::media::midi;
using namespace vocato;
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

} // namespace

TEST(Parameters, AFreshNodeReportsPresetOneValuesAndNoChangeTimes) {
    NodeRig rig;
    EXPECT_EQ(rig.GetFloat(PARAM_BEND_RANGE), 4.0f);
    EXPECT_EQ(rig.GetFloat(PARAM_MIDI_MIN), 36.0f);
    EXPECT_EQ(rig.GetFloat(PARAM_MIDI_MAX), 72.0f);
    EXPECT_EQ(rig.GetFloat(PARAM_LEVEL_CEIL_DB), -6.0f);
    EXPECT_EQ(rig.GetFloat(PARAM_START_DISTANCE), 0.1f);
    EXPECT_EQ(rig.GetInt(PARAM_PRESET), 0);
    EXPECT_EQ(rig.GetInt(PARAM_PROGRAM), 0);
    for (int32_t id : kParameterIds) {
        EXPECT_EQ(rig.LastChange(id), 0) << id;
    }
}

TEST(Parameters, GetRefusesASmallBufferAndAnUnknownId) {
    NodeRig rig;
    int64_t when;
    float v;
    size_t size = 3;
    EXPECT_EQ(rig.node->GetParameterValue(PARAM_BEND_RANGE, &when, &v, &size), media::kNoMemory);
    size = 4;
    EXPECT_EQ(rig.node->GetParameterValue(22, &when, &v, &size), media::kError);
}

TEST(Parameters, SettingTheSameValueChangesNothing) {
    NodeRig rig;
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.script->sets.clear();
    rig.SetFloat(PARAM_HOLD_DISTANCE, 0.3f);
    EXPECT_TRUE(rig.script->sets.empty());
    EXPECT_TRUE(listener.seen.empty());
    EXPECT_EQ(rig.LastChange(PARAM_HOLD_DISTANCE), 0);
}

TEST(Parameters, AChangeReachesTheEngineMovesItsTimeAndIsBroadcast) {
    NodeRig rig;
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.script->sets.clear();
    rig.clock.Set(20'000'000);
    rig.SetFloat(PARAM_HOLD_DISTANCE, 0.7f);
    EXPECT_EQ(rig.script->sets, (std::vector<std::pair<int16_t, double>>{
                                    {WFET_HOLD_DISTANCE, static_cast<double>(0.7f)}}));
    EXPECT_EQ(rig.LastChange(PARAM_HOLD_DISTANCE), 20'000'000);
    ASSERT_EQ(listener.seen.size(), 1u);
    EXPECT_EQ(listener.seen[0].id, PARAM_HOLD_DISTANCE);
    EXPECT_EQ(listener.seen[0].when, 20'000'000);
}

TEST(Parameters, TheNoteRangeTruncatesAndComparesAsAnInteger) {
    NodeRig rig;
    rig.script->sets.clear();
    rig.SetFloat(PARAM_MIDI_MIN, 47.9f);
    EXPECT_EQ(rig.script->sets, (std::vector<std::pair<int16_t, double>>{{WFET_MIN_NOTE, 47.0}}));
    EXPECT_EQ(rig.window.midiMin.load(), 47.0f);
    const int64_t changed = rig.LastChange(PARAM_MIDI_MIN);
    rig.clock.Set(30'000'000);
    rig.SetFloat(PARAM_MIDI_MIN, 47.2f);
    EXPECT_EQ(rig.script->sets.size(), 1u);
    EXPECT_EQ(rig.LastChange(PARAM_MIDI_MIN), changed);
    EXPECT_EQ(rig.GetFloat(PARAM_MIDI_MIN), 47.0f);
}

TEST(Parameters, TranspositionSilencesRestoresExpressionAndTellsTheWindow) {
    NodeRig rig(true, 5);
    rig.sink.sent.clear();
    rig.SetFloat(PARAM_TRANSPOSE, 12.0f);
    const auto sent = rig.sink.Messages();
    ASSERT_EQ(sent.size(), 17u);
    EXPECT_EQ(sent[15], midi::ControlChange(16, 123, 0));
    EXPECT_EQ(sent[16], midi::ControlChange(5, 11, 127));
    EXPECT_EQ(rig.window.transpose.load(), 12.0f);
}

TEST(Parameters, ARejectedEngineValueIsStillStoredAndBroadcast) {
    NodeRig rig;
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.SetFloat(PARAM_LAG_WEIGHT, 5.0f); // the engine takes 0 < v < 1
    EXPECT_EQ(rig.GetFloat(PARAM_LAG_WEIGHT), 5.0f);
    EXPECT_EQ(listener.seen.size(), 1u);
}

TEST(Parameters, UnknownIdsAndShortValuesAreNotQueued) {
    NodeRig rig;
    const float v = 9.0f;
    rig.node->SetParameterValue(22, 0, &v, 4);
    rig.node->SetParameterValue(PARAM_TRANSPOSE, 0, &v, 3);
    rig.node->RunEvents();
    EXPECT_EQ(rig.GetFloat(PARAM_TRANSPOSE), 0.0f);
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
    rig.node->RunEvents();
    EXPECT_EQ(rig.GetFloat(PARAM_TRANSPOSE), 0.0f);
    rig.clock.Set(now + 1000);
    rig.node->RunEvents();
    EXPECT_EQ(rig.GetFloat(PARAM_TRANSPOSE), 2.0f);
    rig.clock.Set(now + 2000);
    rig.node->RunEvents();
    EXPECT_EQ(rig.GetFloat(PARAM_TRANSPOSE), 3.0f);
}

TEST(Parameters, APresetBroadcastsThirteenValuesInOrderAndRepeatingItDoesNothing) {
    NodeRig rig;
    Broadcasts listener;
    rig.node->AddParameterListener(&listener);
    rig.SetInt(PARAM_PRESET, 3);
    std::vector<int32_t> ids;
    for (const auto& s : listener.seen) {
        ids.push_back(s.id);
    }
    EXPECT_EQ(ids, (std::vector<int32_t>{45, 29, 47, 49, 25, 27, 21, 23, 33, 35, 37, 41, 43}));
    EXPECT_EQ(listener.seen[2].asFloat, 48.0f);
    const int created = rig.script->created;
    rig.SetInt(PARAM_PRESET, 3);
    EXPECT_EQ(listener.seen.size(), 13u);
    EXPECT_EQ(rig.script->created, created);
}

TEST(Parameters, AProgramChangeGoesToChannelOne) {
    NodeRig rig(true, 9);
    rig.sink.sent.clear();
    rig.SetInt(PARAM_PROGRAM, 73);
    EXPECT_EQ(rig.sink.Messages().back(), midi::ProgramChange(1, 73));
    EXPECT_EQ(rig.GetInt(PARAM_PROGRAM), 73);
}
