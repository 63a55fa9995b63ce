// Pitch and note accuracy of the precise tracker on generated signals: steady tones across
// every preset's range, vibrato, weak fundamentals, vowels, noise, glides and leaps.
#include "PreciseTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace precisetest;

struct Range {
    int preset;
    int minNote;
    int maxNote;
};

// The note ranges of the twenty input presets.
const Range kPresetRanges[] = {{1, 36, 72},  {3, 48, 78},  {4, 39, 76},  {5, 27, 56},  {6, 55, 103},
                               {7, 48, 91},  {8, 36, 76},  {9, 28, 67},  {10, 55, 82}, {11, 40, 72},
                               {12, 34, 77}, {13, 28, 58}, {14, 52, 81}, {15, 50, 94}, {16, 34, 75},
                               {17, 74, 102}, {18, 60, 96}, {19, 58, 91}, {20, 55, 91}};

class SteadyToneInPresetRange : public testing::TestWithParam<Range> {};

TEST_P(SteadyToneInPresetRange, GivesOneNoteWithinThreeCents) {
    const Range r = GetParam();
    for (int note : {r.minNote + 1, (r.minNote + r.maxNote) / 2, r.maxNote - 1}) {
        // A quarter-tone off the grid, so the bend has to carry the fine pitch.
        const double pitch = note + 0.25;
        auto tracker = MakeTracker({.minNote = double(r.minNote), .maxNote = double(r.maxNote)});
        const std::vector<int16_t> tone =
            Render({.frequency = NoteFrequency(pitch), .seconds = 0.6, .harmonics = {1, 0.6, 0.4, 0.2}});
        const TrackRun run = Track(*tracker, Concat({Silence(0.1), tone, Silence(0.1)}));
        ASSERT_EQ(NoteNumbers(run), std::vector<int>{note}) << "note " << note;
        EXPECT_NEAR(run.notes[0].meanPitch, pitch, 0.03) << "note " << note;
        EXPECT_LT(run.notes[0].pitchSpread, 0.03) << "note " << note;
    }
}

INSTANTIATE_TEST_SUITE_P(Presets, SteadyToneInPresetRange, testing::ValuesIn(kPresetRanges),
                         [](const auto& info) { return "preset" + std::to_string(info.param.preset); });

TEST(PreciseTracking, VibratoOfFiftyCentsStaysOneNoteAndTheBendFollowsIt) {
    for (double rate : {5.0, 6.0}) {
        for (int note : {45, 57, 69}) {
            auto tracker = MakeTracker();
            const Tone tone{.frequency = NoteFrequency(note), .seconds = 1.5, .harmonics = {1, 0.5, 0.3},
                            .vibratoCents = 50, .vibratoHz = rate};
            const TrackRun run = Track(*tracker, Concat({Silence(0.1), Render(tone), Silence(0.1)}));
            ASSERT_EQ(NoteNumbers(run), std::vector<int>{note}) << note << " at " << rate << " Hz";
            EXPECT_GT(run.notes[0].pitchSpread, 0.35) << "the bend should show the vibrato";
            EXPECT_LT(run.notes[0].pitchSpread, 0.6);
        }
    }
}

TEST(PreciseTracking, WeakFundamentalDoesNotFlipTheOctave) {
    // Fundamental 20 dB below the second harmonic, strong even harmonics: the classic trap
    // for period trackers, which jump to the octave above.
    for (int note : {43, 50, 57, 64}) {
        auto tracker = MakeTracker();
        const Tone tone{.frequency = NoteFrequency(note), .seconds = 1.0,
                        .harmonics = {0.1, 1.0, 0.5, 0.7, 0.2, 0.3}};
        const TrackRun run = Track(*tracker, Concat({Silence(0.1), Render(tone), Silence(0.1)}));
        EXPECT_EQ(NoteNumbers(run), std::vector<int>{note});
    }
}

TEST(PreciseTracking, VowelsFromFormantFilteredPulsesGiveTheirPitch) {
    struct Vowel_ { double f1, f2; };
    for (Vowel_ v : {Vowel_{700, 1200}, Vowel_{300, 2300}, Vowel_{500, 900}}) {
        for (int note : {41, 52, 64}) {
            auto tracker = MakeTracker();
            const TrackRun run = Track(*tracker, Concat({Silence(0.1), Vowel(NoteFrequency(note), 0.8, v.f1, v.f2),
                                                    Silence(0.1)}));
            EXPECT_EQ(NoteNumbers(run), std::vector<int>{note}) << v.f1 << "/" << v.f2;
        }
    }
}

TEST(PreciseTracking, ToneWithTwentyDecibelNoiseGivesOneNote) {
    for (int note : {48, 60, 67}) {
        const std::vector<int16_t> tone = Render({.frequency = NoteFrequency(note), .seconds = 1.0,
                                                  .harmonics = {1, 0.5, 0.3}});
        const std::vector<int16_t> noisy = AddNoise(Concat({Silence(0.1), tone, Silence(0.1)}), RmsDb(tone) - 20);
        auto tracker = MakeTracker();
        EXPECT_EQ(NoteNumbers(Track(*tracker, noisy)), std::vector<int>{note});
    }
}

TEST(PreciseTracking, BlownAttackInTheLowerOctaveSettlesOnTheNote) {
    // A flute or recorder may sound the octave below for its first periods before it settles
    // in its register; the note must not stay in the lower octave.
    const std::vector<int16_t> low = Render({.frequency = NoteFrequency(67), .seconds = 0.03, .harmonics = {1, 0.3}});
    const std::vector<int16_t> note = Render({.frequency = NoteFrequency(79), .seconds = 0.5, .harmonics = {1, 0.3}});
    auto tracker = MakeTracker({.minNote = 60, .maxNote = 96});
    const TrackRun run = Track(*tracker, Concat({Silence(0.05), low, note, Silence(0.1)}));
    ASSERT_FALSE(run.notes.empty());
    EXPECT_EQ(run.notes.back().note, 79);
    EXPECT_LT(run.notes.back().onFrame * 16 / 44100.0, 0.05 + 0.03 + 0.03);
}

TEST(PreciseTracking, OctaveLeapsAreFollowed) {
    const auto tone = [](int note) {
        return Render({.frequency = NoteFrequency(note), .seconds = 0.35, .harmonics = {1, 0.5, 0.3}});
    };
    auto tracker = MakeTracker();
    const TrackRun run = Track(*tracker, Concat({tone(50), tone(62), tone(50), tone(62), Silence(0.1)}));
    EXPECT_EQ(NoteNumbers(run), (std::vector<int>{50, 62, 50, 62}));
}

// A released note rings on under the next one (a synthesizer's release, a room): the mixture of
// a fourth is periodic in their common period, two octaves below the old note, which must not
// become a note; the new note must be found while the old one still rings.
TEST(PreciseTracking, NoteReleasedIntoTheNextIsFollowedThroughTheMixture) {
    for (auto [from, to] : {std::pair{55, 60}, std::pair{60, 55}, std::pair{57, 59}}) {
        const double rate = 44100;
        const std::vector<int16_t> old = Render({.frequency = NoteFrequency(from), .seconds = 0.7,
                                                 .levelDb = -8, .harmonics = {1, 0.5, 0.3}});
        const std::vector<int16_t> next = Render({.frequency = NoteFrequency(to), .seconds = 0.5,
                                                  .levelDb = -8, .harmonics = {1, 0.5, 0.3}});
        const size_t change = static_cast<size_t>(0.4 * rate);
        std::vector<int16_t> mixture(change + next.size());
        for (size_t i = 0; i < mixture.size(); ++i) {
            // The old note decays with a 100 ms time constant; the new one rises in 30 ms.
            const double t = (double(i) - double(change)) / rate;
            const double oldGain = t < 0 ? 1.0 : std::exp(-t / 0.1);
            const double newGain = t < 0 ? 0.0 : std::min(1.0, t / 0.03);
            const double v = (i < old.size() ? oldGain * old[i] : 0.0) + (t < 0 ? 0.0 : newGain * next[i - change]);
            mixture[i] = Saturate(v);
        }
        auto tracker = MakeTracker();
        const TrackRun run = Track(*tracker, Concat({mixture, Silence(0.1)}));
        ASSERT_EQ(NoteNumbers(run), (std::vector<int>{from, to})) << from << " to " << to;
        const double found = run.notes[1].onFrame * 16 / rate - 0.4;
        EXPECT_LT(found, 0.04) << from << " to " << to;
    }
}

TEST(PreciseTracking, PortamentoEndsOnTheTargetAndPassesThroughInOrder) {
    const Tone glide{.frequency = NoteFrequency(55), .seconds = 0.25, .harmonics = {1, 0.5, 0.3},
                     .glideTo = NoteFrequency(60)};
    const Tone hold{.frequency = NoteFrequency(60), .seconds = 0.4, .harmonics = {1, 0.5, 0.3}};
    const Tone start{.frequency = NoteFrequency(55), .seconds = 0.3, .harmonics = {1, 0.5, 0.3}};
    auto tracker = MakeTracker();
    const std::vector<int> notes =
        NoteNumbers(Track(*tracker, Concat({Render(start), Render(glide), Render(hold), Silence(0.1)})));
    ASSERT_GE(notes.size(), 2u);
    EXPECT_LE(notes.size(), 7u);
    EXPECT_EQ(notes.front(), 55);
    EXPECT_EQ(notes.back(), 60);
    EXPECT_TRUE(std::is_sorted(notes.begin(), notes.end()));
}

} // namespace
