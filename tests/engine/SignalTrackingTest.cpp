// The engine on generated signals: pitch error in cents, note events, and independence from
// how the input is cut into buffers.
#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

namespace {

using namespace enginetest;

// Warm-up before pitch is judged: filters, envelopes and enough periods for a match.
constexpr size_t kWarmUpFrames = 200;

// A sine, a rich tone and a weak fundamental across the voice range, at several levels.
TEST(SignalTracking, ASteadyToneStartsOneNoteOnTheRightPitchWithinAFewCents) {
    const std::vector<double> sine{1.0}, rich{1.0, 0.5, 0.33}, weak{0.2, 1.0, 0.6};
    const std::tuple<const std::vector<double>&, double, double> cases[] = {
        {sine, 45, -6},  {sine, 57, -20}, {sine, 69, -6}, {rich, 45, -6},
        {rich, 60, -12}, {rich, 69, -20}, {weak, 50, -6}, {weak, 62, -12}};
    for (const auto& [shape, note, levelDb] : cases) {
        SCOPED_TRACE(::testing::Message() << shape.size() << " harmonics from " << shape[0]
                                          << ", note " << note << " at " << levelDb << " dBFS");
        const double f = NoteFrequency(note);
        const Trace t = RunVoice(Render({.frequency = f, .levelDb = levelDb, .harmonics = shape}));
        EXPECT_EQ(t.NoteOns(), std::vector<int16_t>{static_cast<int16_t>(note)})
            << "none re-struck";
        double worst = 0;
        for (size_t i = kWarmUpFrames; i < t.frequencies.size(); ++i) {
            ASSERT_GT(t.frequencies[i], 0) << "unvoiced at frame " << i;
            worst = std::max(worst, std::fabs(1200 * std::log2(t.frequencies[i] / f)));
        }
        EXPECT_LT(worst, 5.0) << "cents";
    }
}

// Exact event lists: any change to the analysis or the decision that moves an event by one
// frame shows up here first. The sounding note's search cannot follow a fifth beyond its bend
// range: the match is lost, the note ends, and the new pitch starts afresh.
TEST(SignalTracking, AToneThatStopsOrLeapsAFifthGivesExactlyTheseEvents) {
    const auto tone = [](double f) { return Render({.frequency = f, .seconds = 0.5}); };
    std::vector<int16_t> stops = tone(441);
    ASSERT_EQ(stops.size() / 16, 1378u); // the tone's last frame
    stops.resize(stops.size() + 22050, 0);
    EXPECT_EQ(RunVoice(stops).events, (std::vector<Event>{{15, -1, 69, 127}, {1501, 69, -1, 127}}));
    std::vector<int16_t> leap = tone(NoteFrequency(57));
    const std::vector<int16_t> high = tone(NoteFrequency(64));
    leap.insert(leap.end(), high.begin(), high.end());
    const std::vector<Event> expected = {
        {34, -1, 57, 127}, {1397, 57, -1, 127}, {1406, -1, 64, 127}};
    EXPECT_EQ(RunVoice(leap).events, expected);
}

TEST(SignalTracking, VibratoWithinTheBendRangeStaysOneNoteAndMovesTheBend) {
    Tone vibrato{.frequency = NoteFrequency(60), .seconds = 1.5, .vibratoCents = 50};
    vibrato.harmonics = {1.0, 0.4};
    const Trace t = RunVoice(Render(vibrato));
    EXPECT_EQ(t.NoteOns().size(), 1u);
    int16_t low = 16383;
    int16_t high = 0;
    for (size_t i = kWarmUpFrames; i < t.outputs.size(); ++i) {
        low = std::min(low, t.outputs[i].bend);
        high = std::max(high, t.outputs[i].bend);
    }
    // ±50 cents with a 4-semitone range is about ±1024 around the centre.
    EXPECT_LT(low, 8192 - 700);
    EXPECT_GT(high, 8192 + 700);
}

TEST(SignalTracking, WhiteNoiseBelowTheStartLevelStartsNothing) {
    std::mt19937 rng(7);
    std::normal_distribution<double> noise(0, 300); // about -40 dBFS rms, below -24 dB
    std::vector<int16_t> signal(44100 * 2);
    for (int16_t& v : signal) {
        v = static_cast<int16_t>(std::clamp(noise(rng), -32768.0, 32767.0));
    }
    EXPECT_TRUE(RunVoice(signal).events.empty());
}

TEST(SignalTracking, OutputIsIdenticalForEveryBufferSizeThatIsAMultipleOf16) {
    const Tone tone{.frequency = 196, .harmonics = {1.0, 0.5, 0.25}, .vibratoCents = 30};
    const std::vector<int16_t> signal = Render(tone);
    const Trace expected = RunVoice(signal, 16);
    for (size_t block : {32u, 128u, 1024u, 4096u, 44096u}) {
        const Trace t = RunVoice(signal, block);
        ASSERT_EQ(t.events, expected.events) << block;
        ASSERT_EQ(t.frequencies, expected.frequencies) << block;
    }
}

} // namespace
