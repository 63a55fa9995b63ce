// The plugin run by a host: refusing without urid:map, every output written on the first run,
// and any sample rate handled.
#include "TestHost.h"

#include "Fixtures.h"

#include "VocatoAddOn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vocato::lv2::test {
namespace {

// A tone with a quarter second of silence before and after, so that it starts and ends.
std::vector<float> WithSilenceAround(const std::vector<float>& tone, double rate) {
    std::vector<float> out(static_cast<size_t>(rate / 4), 0.0f);
    out.insert(out.end(), tone.begin(), tone.end());
    out.insert(out.end(), static_cast<size_t>(rate / 4), 0.0f);
    return out;
}

size_t CountNoteOns(const std::vector<MidiEvent>& events, int note) {
    size_t count = 0;
    for (const MidiEvent& e : events) {
        count += e.bytes.size() == 3 && (e.bytes[0] & 0xF0) == 0x90 && e.bytes[2] != 0 &&
                 (note < 0 || e.bytes[1] == note);
    }
    return count;
}

TEST(PluginInstance, WithoutUridMapIsRefusedWithOneLineOnStandardError) {
    TestHost host;
    ::testing::internal::CaptureStderr();
    const bool made = host.Instantiate(44100.0, false);
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(made);
    ASSERT_FALSE(err.empty());
    EXPECT_EQ(err.find('\n'), err.size() - 1) << err;
    EXPECT_NE(err.find("urid#map"), std::string::npos) << err;
}

TEST(PluginInstance, FirstRunWritesTheLatencyOfTheNodesTracker) {
    TestHost host;
    ASSERT_TRUE(host.Instantiate(48000.0));
    host.SetControl(kLatency, std::numeric_limits<float>::quiet_NaN());
    host.Activate();
    host.RunBlock(nullptr, 0);

    VocatoAddOn addOn(0);
    const FlavorInfo* flavor = nullptr;
    addOn.GetFlavorAt(0, &flavor);
    NodeOptions options;
    options.internalSynth = false;
    auto node = addOn.InstantiateNodeFor(flavor, std::move(options));
    node->NodeRegistered();
    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    format.raw.frameRate = 48000.0;
    format.raw.channelCount = 1;
    media::MediaInput in;
    node->Connected({0, 0}, {0, 0}, format, &in);
    ASSERT_GT(node->DecisionDelaySamples(), 16u);
    EXPECT_EQ(host.Latency(), static_cast<float>(node->DecisionDelaySamples()));
}

TEST(PluginInstance, APresetChangeMovesTheReportedLatency) {
    TestHost host;
    ASSERT_TRUE(host.Instantiate(44100.0));
    host.Activate();
    const std::vector<float> silence(64, 0.0f);
    host.RunBlock(silence.data(), 64);
    const float voice = host.Latency();
    host.SetControl(kPreset, 5); // "Bass": lower notes, longer periods, one period to decide
    host.RunBlock(silence.data(), 64);
    EXPECT_NE(host.Latency(), voice);
    EXPECT_GT(host.Latency(), 0.0f);
}

class PluginAtRate : public ::testing::TestWithParam<double> {};

TEST_P(PluginAtRate, FindsTheNoteOfATone) {
    const double rate = GetParam();
    TestHost host;
    ASSERT_TRUE(host.Instantiate(rate));
    host.Activate();
    host.Run(WithSilenceAround(vocato::test::Sine(440.0, rate, 0.5), rate), {512});
    EXPECT_EQ(CountNoteOns(host.Events(), 69), 1u);
    EXPECT_EQ(CountNoteOns(host.Events(), -1), 1u);
}

INSTANTIATE_TEST_SUITE_P(StreamRates, PluginAtRate, ::testing::Values(22050.0, 48000.0, 96000.0));

TEST(PluginInstance, EitherTrackerChoiceTracksATone) {
    // A kind this build lacks must fall back to one it has, never to a node without tracker.
    for (float tracker : {0.0f, 1.0f}) {
        SCOPED_TRACE(tracker);
        TestHost host;
        ASSERT_TRUE(host.Instantiate(44100.0));
        host.SetControl(kTracker, tracker);
        host.Activate();
        host.Run(WithSilenceAround(vocato::test::Sine(293.66, 44100.0, 0.5), 44100.0), {128});
        EXPECT_EQ(CountNoteOns(host.Events(), 62), 1u);
    }
}

// Presets 1 and 2 hold the same values: a change between them only restarts the tracker,
// which then finds the sounding note anew. The classic engine keeps its note when a preset
// is fed to the running tracker instead, so the count tells fresh trackers from re-fed ones.
size_t NoteOnsWhilePresetsAlternate(bool worker) {
    TestHost host;
    if (worker) {
        host.EnableWorker();
    }
    EXPECT_TRUE(host.Instantiate(44100.0));
    host.SetControl(kTracker, static_cast<float>(TrackerKind::Classic));
    host.Activate();
    const std::vector<float> tone = vocato::test::Sine(220.0, 44100.0, 4.0);
    const uint32_t quarter = 44100 / 4;
    for (int change = 0; change < 14; ++change) {
        host.SetControl(kPreset, change % 2 == 0 ? 2.0f : 1.0f);
        host.Run(std::vector<float>(tone.begin() + change * quarter,
                                    tone.begin() + (change + 1) * quarter),
                 {256});
    }
    EXPECT_EQ(host.WorkDone(), worker ? 14u : 0u);
    return CountNoteOns(host.Events(), 57);
}

TEST(PluginInstance, WithAWorkerEveryPresetChangeGetsAFreshTracker) {
    EXPECT_EQ(NoteOnsWhilePresetsAlternate(true), 14u);
    // Without one, the four spares made at activation are all there is.
    EXPECT_EQ(NoteOnsWhilePresetsAlternate(false), 4u);
}

TEST(PluginInstance, AHostThatKnowsNoRateIsTakenToRunAt44100) {
    TestHost host;
    ASSERT_TRUE(host.Instantiate(0.0));
    host.Activate();
    host.Run(WithSilenceAround(vocato::test::Sine(440.0, 44100.0, 0.5), 44100.0), {256});
    EXPECT_EQ(CountNoteOns(host.Events(), 69), 1u);
    EXPECT_GT(host.Latency(), 0.0f);
}

TEST(PluginInstance, ARateTheTrackerRefusesGivesSilenceAndZeroLatency) {
    for (double rate : {1000.0, 250000.0}) {
        SCOPED_TRACE(rate);
        TestHost host;
        ASSERT_TRUE(host.Instantiate(rate));
        host.SetControl(kLatency, -1.0f);
        host.Activate();
        host.Run(WithSilenceAround(vocato::test::Sine(440.0, rate, 0.5), rate), {256});
        EXPECT_EQ(CountNoteOns(host.Events(), -1), 0u);
        EXPECT_EQ(host.Latency(), 0.0f);
    }
}

TEST(PluginInstance, ActivationSendsProgramAndBendRangeAtTheStartOfTheFirstRun) {
    TestHost host;
    ASSERT_TRUE(host.Instantiate(44100.0));
    host.SetControl(kProgram, 41);
    host.Activate();
    const std::vector<float> silence(256, 0.0f);
    host.RunBlock(silence.data(), 256);
    // Start announces the program and bend range the node holds; the port's program follows
    // as a parameter change in the same run, all before any audio.
    std::vector<std::vector<uint8_t>> expected;
    for (uint8_t ch = 0; ch < 16; ++ch) {
        expected.push_back({static_cast<uint8_t>(0xB0 | ch), 123, 0});
    }
    expected.push_back({0xC0, 0});
    expected.push_back({0xB0, 101, 0});
    expected.push_back({0xB0, 100, 0});
    expected.push_back({0xB0, 6, 4});
    expected.push_back({0xB0, 38, 0});
    for (uint8_t ch = 0; ch < 16; ++ch) {
        expected.push_back({static_cast<uint8_t>(0xB0 | ch), 123, 0});
    }
    expected.push_back({0xC0, 41});
    std::vector<std::vector<uint8_t>> got;
    for (const MidiEvent& e : host.Events()) {
        if (e.frame == 0) {
            got.push_back(e.bytes);
        }
    }
    EXPECT_EQ(got, expected);
}

TEST(PluginInstance, DeactivationEndsTheSoundingNoteAtTheNextRun) {
    TestHost host;
    ASSERT_TRUE(host.Instantiate(44100.0));
    host.Activate();
    const auto tone = vocato::test::Sine(329.63, 44100.0, 2.0);
    host.Run(std::vector<float>(tone.begin(), tone.begin() + 44100), {256});
    ASSERT_EQ(CountNoteOns(host.Events(), 64), 1u);
    host.Deactivate();
    host.Activate();
    const size_t before = host.Events().size();
    const std::vector<float> silence(256, 0.0f);
    host.RunBlock(silence.data(), 256);
    bool ended = false;
    for (size_t i = before; i < host.Events().size(); ++i) {
        const auto& b = host.Events()[i].bytes;
        ended |= b.size() == 3 && b[0] == 0xB0 && b[1] == 123;
    }
    EXPECT_TRUE(ended);
}

} // namespace
} // namespace vocato::lv2::test
