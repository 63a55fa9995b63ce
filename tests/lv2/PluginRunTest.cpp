// The plugin run by a host: refusing without urid:map, latency, rates, tracker choice, fresh
// trackers from the worker, and the MIDI of activation and deactivation.
#include "TestHost.h"

#include "Fixtures.h"
#include "NodeAccess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace vocato::lv2::test {
namespace {

// A tone with a quarter second of silence before and after, so that it starts and ends.
std::vector<float> ToneWithSilenceAround(double hz, double rate) {
    std::vector<float> out(static_cast<size_t>(rate / 4), 0.0f);
    const std::vector<float> tone = vocato::test::Sine(hz, rate, 0.5);
    out.insert(out.end(), tone.begin(), tone.end());
    out.insert(out.end(), static_cast<size_t>(rate / 4), 0.0f);
    return out;
}

std::vector<int> NoteOns(const std::vector<MidiEvent>& events) {
    std::vector<int> notes;
    for (const MidiEvent& e : events) {
        if (const auto& b = e.bytes; b.size() == 3 && (b[0] & 0xF0) == 0x90 && b[2] != 0) {
            notes.push_back(b[1]);
        }
    }
    return notes;
}

TEST(PluginInstance, WithoutUridMapIsRefusedWithOneLineOnStandardError) {
    ::testing::internal::CaptureStderr();
    TestHost host(44100, false);
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(host.Instantiated());
    ASSERT_FALSE(err.empty());
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
    EXPECT_NE(err.find("urid#map"), std::string::npos) << err;
}

TEST(PluginInstance, FirstRunWritesTheNodesDecisionDelayAsLatencyAndAPresetMovesIt) {
    TestHost host(48000);
    host.SetControl(kLatency, NAN);
    host.Activate();
    host.RunPlugin(nullptr, 0);
    auto node = MakeNode();
    node->NodeRegistered();
    vocato::test::ConnectAudio(*node, 1, 48000.0);
    ASSERT_GT(node->DecisionDelaySamples(), 16u);
    EXPECT_EQ(host.Latency(), static_cast<float>(node->DecisionDelaySamples()));
    host.SetControl(kPreset, 5); // "Bass": lower notes, longer periods
    host.Run(std::vector<float>(64));
    EXPECT_GT(host.Latency(), static_cast<float>(node->DecisionDelaySamples()));
}

TEST(PluginInstance, FindsTheNoteOfAToneAtEveryRateTheTrackerTakesWithEitherTracker) {
    const std::tuple<double, TrackerKind, std::vector<int>> cases[] = {
        {22050, TrackerKind::Precise, {69}}, {48000, TrackerKind::Precise, {69}},
        {96000, TrackerKind::Precise, {69}}, {44100, TrackerKind::Classic, {69}},
        {0, TrackerKind::Precise, {69}}, // a host that knows no rate is taken to run at 44100
        {1000, TrackerKind::Precise, {}}, {250000, TrackerKind::Precise, {}}}; // refused: silence
    for (const auto& [rate, tracker, notes] : cases) {
        SCOPED_TRACE(rate);
        TestHost host(rate);
        host.SetControl(kTracker, static_cast<float>(tracker));
        host.SetControl(kLatency, -1.0f);
        host.Activate();
        host.Run(ToneWithSilenceAround(440.0, rate > 0 ? rate : 44100), {512});
        EXPECT_EQ(NoteOns(host.Events()), notes);
        EXPECT_EQ(host.Latency() > 0.0f, !notes.empty()) << host.Latency();
        EXPECT_GE(host.Latency(), 0.0f);
    }
}

// Presets 1 and 2 hold the same values: a change between them only restarts the tracker,
// which then finds the sounding note anew. The classic engine keeps its note when a preset
// is fed to the running tracker instead, so the count tells fresh trackers from re-fed ones.
TEST(PluginInstance, WithAWorkerEveryPresetChangeGetsAFreshTracker) {
    for (bool worker : {true, false}) {
        TestHost host(44100, true, worker);
        host.SetControl(kTracker, static_cast<float>(TrackerKind::Classic));
        host.Activate();
        const std::vector<float> tone = vocato::test::Sine(220.0, 44100.0, 4.0);
        for (int change = 0; change < 14; ++change) {
            host.SetControl(kPreset, change % 2 == 0 ? 2.0f : 1.0f);
            host.Run({tone.begin() + change * 11025, tone.begin() + (change + 1) * 11025});
        }
        EXPECT_EQ(host.WorkDone(), worker ? 14u : 0u);
        // Without a worker, the four spares made at activation are all there is.
        EXPECT_EQ(NoteOns(host.Events()), std::vector<int>(worker ? 14 : 4, 57)) << worker;
    }
}

std::vector<std::vector<uint8_t>> AllSoundOff(int soundingNote = -1) {
    std::vector<std::vector<uint8_t>> events;
    for (uint8_t channel = 0; channel < 16; ++channel) {
        events.push_back({static_cast<uint8_t>(0xB0 | channel), 123, 0});
        if (channel == 0 && soundingNote >= 0) {
            events.push_back({0x80, static_cast<uint8_t>(soundingNote), 0});
        }
    }
    return events;
}

std::vector<std::vector<uint8_t>> BytesOf(const std::vector<MidiEvent>& events, size_t from, size_t to) {
    std::vector<std::vector<uint8_t>> bytes;
    for (size_t i = from; i < std::min(to, events.size()); ++i) {
        bytes.push_back(events[i].bytes);
    }
    return bytes;
}

TEST(PluginInstance, ActivationSendsProgramAndBendRangeAtTheStartOfTheFirstRun) {
    TestHost host;
    host.SetControl(kProgram, 41);
    host.Activate();
    host.Run(std::vector<float>(256));
    // Start announces the program and bend range the node holds; the port's program follows
    // as a parameter change in the same run, all before any audio.
    std::vector<std::vector<uint8_t>> expected = AllSoundOff();
    expected.insert(expected.end(),
                    {{0xC0, 0}, {0xB0, 101, 0}, {0xB0, 100, 0}, {0xB0, 6, 4}, {0xB0, 38, 0}});
    std::ranges::copy(AllSoundOff(), std::back_inserter(expected));
    expected.push_back({0xC0, 41});
    const auto firstAudio = std::ranges::find_if(host.Events(), [](auto& e) { return e.frame > 0; });
    EXPECT_EQ(BytesOf(host.Events(), 0, firstAudio - host.Events().begin()), expected);
}

// "All notes off" for every key reaches the host as the controllers and the one sounding note.
TEST(PluginInstance, DeactivationEndsTheSoundingNoteAtTheNextRun) {
    TestHost host;
    host.Activate();
    host.Run(vocato::test::Sine(329.63, 44100.0, 1.0));
    ASSERT_EQ(NoteOns(host.Events()), std::vector<int>{64});
    host.Deactivate();
    host.Activate();
    const size_t before = host.Events().size();
    host.Run(std::vector<float>(256));
    std::vector<std::vector<uint8_t>> expected = AllSoundOff();
    std::ranges::copy(AllSoundOff(64), std::back_inserter(expected));
    EXPECT_EQ(BytesOf(host.Events(), before, before + expected.size()), expected);
}

} // namespace
} // namespace vocato::lv2::test
