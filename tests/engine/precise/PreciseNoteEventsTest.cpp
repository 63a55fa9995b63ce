// Note events of the precise tracker: re-struck repeated notes, silence, noise and hum, note
// ends (a free decay among them), the consonants between sung syllables, a quiet performance's
// starts and soft notes, how soon low notes start, level modes and independence from block
// sizes.
#include "PreciseTestSupport.h"

#include <gtest/gtest.h>

namespace {

using namespace precisetest;

TEST(PreciseNoteEvents, RepeatedNotesAreEachStruckAfterAGapADipOrALegatoAttack) {
    const std::vector<int16_t> gap = Silence(0.03);
    const auto gapped = Concat({PlayedNote(57, 0.2), gap, PlayedNote(57, 0.2), gap,
                                PlayedNote(57, 0.2), gap, PlayedNote(57, 0.2), gap});
    EXPECT_EQ(Track(gapped).NoteNumbers(), (Notes{57, 57, 57, 57}));
    // No silence between: each note starts 18 dB below the old one's end and rises within 10 ms,
    // with a new phase, as a re-articulated note does.
    const auto rearticulated = [](int phase) {
        std::vector<int16_t> n = Harmonic(62, 0.25);
        for (size_t k = 0; k < n.size(); ++k) {
            const double t = k / 44100.0;
            const double gain = t < 0.01 ? 0.125 + 0.875 * t / 0.01 : 1.0 - 0.6 * (t - 0.01) / 0.24;
            n[k] = Saturate(n[k] * gain);
        }
        return std::vector<int16_t>(n.begin() + 37 * phase, n.end());
    };
    const auto legato =
        Concat({rearticulated(0), rearticulated(1), rearticulated(2), rearticulated(3)});
    EXPECT_EQ(Track(legato).NoteNumbers(), (Notes{62, 62, 62, 62}));
    // Breathy: the new note is less periodic than the note it interrupts must be to start again,
    // but an attack with no other pitch left once that note is cancelled is that note again.
    for (double breathDb : {-16.0, -14.0, -12.0}) {
        const auto breathy =
            Concat({rearticulated(0), AddNoise(rearticulated(1), breathDb), Silence(0.05)});
        EXPECT_EQ(Track(breathy).NoteNumbers(), (Notes{62, 62})) << breathDb;
    }
    // Tongued without a gap: the level sinks by 8 dB over 20 ms and takes 25 ms to come back to
    // 1 dB below where it was, while the waveform runs on unbroken.
    std::vector<int16_t> tongued = Padded(Harmonic(69, 0.6));
    for (size_t k = 0; k < tongued.size(); ++k) {
        for (double dip : {0.3, 0.5}) {
            const double d = k / 44100.0 - dip;
            const double gain = d > -0.02 && d <= 0.0  ? 1.0 + 0.6 * d / 0.02
                                : d > 0.0 && d < 0.025 ? 0.4 + 0.5 * d / 0.025
                                : d >= 0.025           ? 0.9
                                                       : 1.0;
            tongued[k] = Saturate(tongued[k] * gain);
        }
    }
    EXPECT_EQ(Track(tongued).NoteNumbers(), (Notes{69, 69, 69}));
}

TEST(PreciseNoteEvents, SilenceNoiseAndQuietTonesBesideAPerformanceStartNothing) {
    EXPECT_TRUE(Track(Silence(1.0)).notes.empty());
    // Loud white noise is not periodic; quiet noise is also below the start level.
    for (double db : {-10.0, -20.0, -40.0}) {
        EXPECT_TRUE(Track(AddNoise(Silence(1.0), db, 11)).notes.empty()) << db << " dB";
    }
    // Start level -24 dB, hold level -36 dB. Below the hold level nothing ever starts; between
    // the two, a tone starts a note only when it is the performance, not beside a louder one.
    const auto belowHold = Render({.frequency = 220, .seconds = 0.5, .levelDb = -38});
    EXPECT_TRUE(Track(belowHold).notes.empty());
    const auto quiet = Render({.frequency = 220, .seconds = 0.5, .levelDb = -31});
    EXPECT_EQ(Track(quiet).NoteNumbers(), Notes{57});
    const auto besideLoud = Concat({Harmonic(64, 0.3, -4), Silence(0.5), quiet});
    EXPECT_EQ(Track(besideLoud).NoteNumbers(), Notes{64});
}

TEST(PreciseNoteEvents, MainsHumNeitherPlaysNorBendsTheNotesOverIt) {
    // Hum a little off the mains frequency, as the mains always are, under a bass: in its range
    // the hum alone is a note, and its partials lie next to the notes' own. Until the hum has
    // been heard on its own for a tenth of a second it sounds as a note; after that only the
    // notes played do, though a note's end may leave a blip of it.
    const Voice bass{.minNote = 28, .maxNote = 55};
    const Notes melody{40, 45, 50, 55, 43};
    std::vector<int16_t> played = Silence(0.6);
    for (int note : melody) {
        played = Concat({played, PlayedNote(note, 0.4), Silence(0.25)});
    }
    for (double mains : {50.02, 59.97}) {
        Notes heard;
        for (const Note& n : Track(AddHum(played, mains, 5, -40), bass).notes) {
            if (n.OnSeconds() > 0.3 && n.OffSeconds() - n.OnSeconds() > 0.03) {
                heard.push_back(n.note);
                EXPECT_NEAR(n.meanPitch, n.note, 0.1) << mains << " Hz, note " << n.note;
            }
        }
        EXPECT_EQ(heard, melody) << mains << " Hz";
    }
}

// A held note from `releaseSeconds` on falling by `dbPerSecond`, as a released one rings down.
std::vector<int16_t> Decaying(std::vector<int16_t> note, double releaseSeconds,
                              double dbPerSecond) {
    const size_t release = static_cast<size_t>(releaseSeconds * 44100);
    for (size_t i = release; i < note.size(); ++i) {
        note[i] = Saturate(note[i] * std::pow(10.0, -dbPerSecond * (i - release) / 44100.0 / 20.0));
    }
    return note;
}

TEST(PreciseNoteEvents, NoteEndsWhenTheSoundStopsOrIsReleasedAndItsTailStartsNothing) {
    // A release of 200 dB per second (a synthesizer's release, a damped string) stays periodic
    // and above the hold level for a while. A fall of 9 dB below a ceiling that sinks by 20 dB/s
    // takes 50 ms; without the release detector the note would last until the tail fades below
    // -36 dB.
    const std::vector<int16_t> released = Decaying(Harmonic(64, 0.8), 0.4, 200.0);
    // In a room, a note that stops breaks off: for 5 ms its end and the first reflections blur
    // the waveform. Its reverberation rings on at its pitch, clearly periodic, 14 dB down 20 ms
    // later and sinking by 60 dB/s.
    std::vector<int16_t> tail = Harmonic(67, 0.4);
    for (size_t i = 0; i < tail.size(); ++i) {
        const double t = i / 44100.0;
        const double db = t < 0.02 ? -3.0 - 550.0 * t : -14.0 - 60.0 * (t - 0.02);
        tail[i] = Saturate(tail[i] * std::pow(10.0, db / 20.0));
    }
    // A clarinet's fundamental may sink faster than its twelfth as it rings down in a room, and
    // the analysis then reads the twelfth as the pitch: still the tail, no note of its own.
    Tone body{.frequency = NoteFrequency(50), .seconds = 0.8, .levelDb = -8};
    body.harmonics = {1, 0, 0, 0, 0.3, 0, 0.2};
    Tone twelfth = body;
    twelfth.harmonics = {0, 0, 1};
    twelfth.levelDb -= 8;
    std::vector<int16_t> clarinet = Decaying(Render(body), 0.3, 150.0);
    const std::vector<int16_t> ringingTwelfth = Decaying(Render(twelfth), 0.3, 40.0);
    for (size_t i = 0; i < clarinet.size(); ++i) {
        clarinet[i] = Saturate(clarinet[i] + ringingTwelfth[i]);
    }
    const std::tuple<std::vector<int16_t>, int, double, double> cases[] = {
        {Concat({PlayedNote(60, 0.5), Silence(0.3)}), 60, 0.48, 0.55},
        {Concat({released, Silence(0.1)}), 64, 0.42, 0.47},
        {Concat({Harmonic(67, 0.3), AddNoise(Silence(0.005), -12), tail, Silence(0.1)}), 67, 0.3,
         0.33},
        {Concat({clarinet, Silence(0.1)}), 50, 0.3, 0.6}};
    for (const auto& [signal, note, earliest, latest] : cases) {
        const TrackRun run = Track(signal);
        ASSERT_EQ(run.NoteNumbers(), Notes{note});
        EXPECT_GT(run.notes[0].OffSeconds(), earliest) << note;
        EXPECT_LT(run.notes[0].OffSeconds(), latest) << note;
    }
}

TEST(PreciseNoteEvents, AFreeDecayEndsItsNoteEarlyButATremoloDoesNotEndIt) {
    // A lifted bow lets the string ring down by 120 dB per second: 6 dB under the ceiling,
    // which sinks by 20 dB/s, 60 ms after the release; the 9 dB a slow fade needs would take
    // 90 ms. A deep tremolo, +-4 dB at 6 Hz, falls as fast and as far for a moment, but turns
    // back.
    const TrackRun decayed = Track(Concat({Decaying(Harmonic(57, 1.0), 0.4, 120.0), Silence(0.1)}));
    ASSERT_EQ(decayed.NoteNumbers(), Notes{57});
    EXPECT_GT(decayed.notes[0].OffSeconds(), 0.44);
    EXPECT_LT(decayed.notes[0].OffSeconds(), 0.475);

    std::vector<int16_t> tremolo = Harmonic(57, 1.0);
    for (size_t i = 0; i < tremolo.size(); ++i) {
        const double db = 4.0 * std::sin(2.0 * std::numbers::pi * 6.0 * i / 44100.0);
        tremolo[i] = Saturate(tremolo[i] * std::pow(10.0, (db - 4.0) / 20.0));
    }
    const TrackRun held = Track(Concat({tremolo, Silence(0.1)}));
    ASSERT_EQ(held.NoteNumbers(), Notes{57});
    EXPECT_GT(held.notes[0].OffSeconds(), 0.98);
}

// Two sung syllables, `from` and then `to`, joined by a voiced consonant (a d or a b): for
// 60 ms the mouth is shut and only a voice bar `barDb` under the vowel sounds, in which the
// pitch moves on over the last 30 ms; the next vowel comes back within 15 ms. The waveform runs
// on unbroken, with 100 ms of silence around.
std::vector<int16_t> ThroughAVoicedConsonant(int from, int to, double barDb) {
    const double closes = 0.5, opens = 0.56, rate = 44100;
    std::vector<int16_t> out(static_cast<size_t>(1.06 * rate));
    const double bar = std::pow(10.0, barDb / 20.0);
    double phase = 0;
    for (size_t i = 0; i < out.size(); ++i) {
        const double t = i / rate;
        const double moved = std::clamp((t - opens + 0.03) / 0.03, 0.0, 1.0);
        phase += 2 * std::numbers::pi * NoteFrequency(from + (to - from) * moved) / rate;
        const double reopened = std::min(1.0, (t - opens) / 0.015);
        const double gain = t < 0.1 || t > 0.96 ? 0.0
                            : t < closes        ? 1.0
                            : t < opens         ? std::max(bar, 1.0 - (t - closes) / 0.01)
                                                : bar + (1.0 - bar) * reopened;
        const double wave = std::sin(phase) + 0.5 * std::sin(2 * phase) + 0.3 * std::sin(3 * phase);
        out[i] = Saturate(10000 * gain * wave);
    }
    return out;
}

TEST(PreciseNoteEvents, AVoicedConsonantBetweenSyllablesStartsNoNoteOfItsOwn) {
    // The bar lies 26-34 dB under the vowels, above the hold level, and the peak envelope still
    // reads the vowel before for tens of milliseconds: it is what the voice left, not a note.
    for (const auto& [from, to, barDb] : {std::tuple{60, 64, -26.0}, std::tuple{62, 57, -30.0},
                                           std::tuple{67, 65, -34.0}, std::tuple{55, 62, -30.0}}) {
        const TrackRun run = Track(ThroughAVoicedConsonant(from, to, barDb));
        ASSERT_EQ(run.NoteNumbers(), (Notes{from, to})) << barDb;
        EXPECT_LT(run.notes[1].OnSeconds(), 0.56 + 0.025) << to;
    }
}

// Notes that swell from 40 dB down to their peak in 80 ms, as bowed strings and voices do,
// 100 ms apart.
std::vector<int16_t> SwellingPhrase(double peakDb) {
    std::vector<int16_t> phrase;
    for (int note : {57, 60, 62, 64, 60}) {
        std::vector<int16_t> n = Harmonic(note, 0.4, peakDb);
        for (size_t k = 0; k < n.size(); ++k) {
            const double swellDb = std::min(0.0, -40.0 + 40.0 * k / (0.08 * 44100));
            n[k] = Saturate(n[k] * std::pow(10.0, swellDb / 20.0) *
                            std::min(1.0, (n.size() - k) / 441.0));
        }
        phrase.insert(phrase.end(), n.begin(), n.end());
        phrase.resize(phrase.size() + static_cast<size_t>(0.1 * 44100), 0);
    }
    return phrase;
}

TEST(PreciseNoteEvents, AQuietPerformanceStartsItsNotesAsEarlyAsALoudOne) {
    // At -30 dBFS the notes peak just 3 dB over the floor of the start level (-33 dB). Once the
    // first has shown the performance, the others start as far down their swell as at -6 dBFS,
    // and in the level mode whose scale begins at the hold level they still start at velocity 1.
    const TrackRun loud = Track(SwellingPhrase(-6));
    for (double levelMode : {WFET_LEVEL_EXPRESSION, WFET_LEVEL_RELATIVE}) {
        const TrackRun quiet = Track(SwellingPhrase(-30), {.levelMode = levelMode});
        ASSERT_EQ(quiet.NoteNumbers(), (Notes{57, 60, 62, 64, 60}));
        ASSERT_EQ(loud.NoteNumbers(), quiet.NoteNumbers());
        for (size_t i = 1; i < quiet.notes.size(); ++i) {
            const auto quietOn = static_cast<double>(quiet.notes[i].onFrame);
            EXPECT_NEAR(quietOn, static_cast<double>(loud.notes[i].onFrame), 8.0) << i;
        }
        for (const WFETMidiOut& out : quiet.outputs) {
            EXPECT_TRUE(out.noteOn < 0 || out.velocity >= 1);
        }
    }
    // Two seconds after it stopped, while its memory has faded by only 7 dB, a tone under the
    // hold level is background again.
    const auto thenBackground = Concat({SwellingPhrase(-20), Silence(2.1), Harmonic(57, 0.5, -40)});
    EXPECT_EQ(Track(thenBackground).NoteNumbers(), (Notes{57, 60, 62, 64, 60}));
}

TEST(PreciseNoteEvents, LowNotesStartWithinAPeriodAndALimitedWindow) {
    // Every period is compared with the one before it over at most 12 ms, so even the lowest
    // notes of a bass start about a period, that window and the 6 ms confirmation after their
    // 10 ms attack ramp, not after two and a half of their long periods, nor after a third
    // period to show that they repeat (C2 took 49 ms that way).
    for (int note : {24, 28, 33, 36, 38, 40}) {
        const double period = 1.0 / NoteFrequency(note);
        const TrackRun run = Track(Padded(PlayedNote(note, 0.6)), {.minNote = 24, .maxNote = 56});
        ASSERT_EQ(run.NoteNumbers(), Notes{note});
        const double start = run.notes[0].OnSeconds() - 0.1;
        EXPECT_LT(start, 0.01 + period + 0.012 + 0.006 + 0.005) << note;
    }
}

TEST(PreciseNoteEvents, LevelModesWriteVelocityAndExpressionLikeTheEngine) {
    const auto tone =
        Concat({Render({.frequency = 330, .seconds = 0.3, .levelDb = -12}), Silence(0.1)});
    // The first note-on's record, and one from the middle of the note.
    const auto onAndMiddle = [&](double mode) {
        const TrackRun run = Track(tone, {.levelMode = mode});
        const auto on = std::ranges::find_if(run.outputs, [](auto& o) { return o.noteOn >= 0; });
        EXPECT_NE(on, run.outputs.end());
        const WFETMidiOut first = on != run.outputs.end() ? *on : WFETMidiOut{-1, -1, -1, -1, -1};
        return std::pair{first, run.outputs[run.outputs.size() / 2]};
    };
    // -12 dBFS peak between a -36 dB floor and a -6 dB ceiling: level 101.
    const WFETMidiOut e = onAndMiddle(WFET_LEVEL_EXPRESSION).first;
    EXPECT_EQ(e.velocity, 127);
    EXPECT_NEAR(e.expression, 101, 3);
    const WFETMidiOut v = onAndMiddle(WFET_LEVEL_VELOCITY).first;
    EXPECT_NEAR(v.velocity, 101, 3);
    EXPECT_EQ(v.expression, 127);
    const auto [r, rMiddle] = onAndMiddle(WFET_LEVEL_RELATIVE);
    EXPECT_EQ(r.expression, 96);
    EXPECT_NEAR(rMiddle.expression, 96, 6) << "steady level keeps expression near 96";
    // The last mode leaves the caller's velocity and expression alone.
    auto none = MakeTracker({.levelMode = WFET_LEVEL_NONE});
    WFETMidiOut out{-1, -1, 33, 8192, 44};
    for (size_t i = 0; i + 16 <= tone.size(); i += 16) {
        none->Process(tone.data() + i, 32);
        none->Calc(&out);
        ASSERT_EQ(out.velocity, 33);
        ASSERT_EQ(out.expression, 44);
    }
}

TEST(PreciseNoteEvents, BendStaysWithinItsRangeAndCentresOnThePitch) {
    const auto tone = Render({.frequency = NoteFrequency(60.5), .seconds = 0.5});
    const TrackRun run = Track(tone, {.bendRange = 2});
    ASSERT_EQ(run.notes.size(), 1u);
    EXPECT_NEAR(run.outputs.back().bend, 8192 + (run.notes[0].note == 60 ? 1 : -1) * 8191 / 4, 40);
}

// A host block that ends inside a 16-sample frame hands the tracker that frame in pieces.
TEST(PreciseNoteEvents, OutputDoesNotDependOnHowTheInputIsCutIntoBlocks) {
    const auto signal = AddNoise(
        Concat({PlayedNote(55, 0.3), Silence(0.05), PlayedNote(62, 0.3),
                Render({.frequency = NoteFrequency(50), .seconds = 0.5, .vibratoCents = 40})}),
        -50);
    const TrackRun whole = Track(signal);
    ASSERT_FALSE(whole.notes.empty());
    for (size_t block : {1u, 7u, 100u, 333u, 1000u}) {
        const TrackRun cut = Track(*MakeTracker(), signal, 4, block);
        ASSERT_EQ(cut.outputs.size(), whole.outputs.size());
        for (size_t f = 0; f < cut.outputs.size(); ++f) {
            const WFETMidiOut &a = cut.outputs[f], &b = whole.outputs[f];
            ASSERT_TRUE(a.noteOff == b.noteOff && a.noteOn == b.noteOn &&
                        a.velocity == b.velocity && a.bend == b.bend &&
                        a.expression == b.expression)
                << "frame " << f << " with blocks of " << block;
        }
    }
}

} // namespace
