// Note events of the precise tracker: re-struck repeated notes, silence and noise, level
// modes, independence from block sizes, and no allocation while processing.
#include "PreciseTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<bool> gCounting{false};
std::atomic<long> gAllocations{0};
} // namespace

// Counts the allocations made while gCounting is set; GoogleTest itself allocates freely.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
    if (gCounting.load(std::memory_order_relaxed)) {
        gAllocations.fetch_add(1, std::memory_order_relaxed);
    }
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    if (gCounting.load(std::memory_order_relaxed)) {
        gAllocations.fetch_add(1, std::memory_order_relaxed);
    }
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace precisetest;

std::vector<int16_t> PlayedNote(int note, double seconds, double attack = 0.01) {
    return Envelope(Render({.frequency = NoteFrequency(note), .seconds = seconds, .harmonics = {1, 0.5, 0.3}}),
                    attack, 0.01);
}

TEST(PreciseNoteEvents, RepeatedNotesWithShortGapsAreEachStruck) {
    auto tracker = MakeTracker();
    const std::vector<int16_t> gap = Silence(0.03);
    const TrackRun run = Track(*tracker, Concat({PlayedNote(57, 0.2), gap, PlayedNote(57, 0.2), gap,
                                            PlayedNote(57, 0.2), gap, PlayedNote(57, 0.2), gap}));
    EXPECT_EQ(NoteNumbers(run), (std::vector<int>{57, 57, 57, 57}));
}

TEST(PreciseNoteEvents, LegatoRepeatedNotesAreStruckAgainOnTheirAttack) {
    // No silence between the notes: each new note starts 18 dB below the old one's end and
    // rises within 10 ms, with a new phase, as a re-articulated note does.
    std::vector<int16_t> line;
    for (int i = 0; i < 4; ++i) {
        std::vector<int16_t> n = Render({.frequency = NoteFrequency(62), .seconds = 0.25, .harmonics = {1, 0.5, 0.3}});
        for (size_t k = 0; k < n.size(); ++k) {
            const double t = k / 44100.0;
            const double g = t < 0.01 ? 0.125 + 0.875 * t / 0.01 : 1.0 - 0.6 * (t - 0.01) / 0.24;
            n[k] = Saturate(n[k] * g);
        }
        line.insert(line.end(), n.begin() + 37 * i, n.end());
    }
    auto tracker = MakeTracker();
    EXPECT_EQ(NoteNumbers(Track(*tracker, line)), (std::vector<int>{62, 62, 62, 62}));
}

TEST(PreciseNoteEvents, SilenceAndNoiseBelowTheVoicingThresholdStartNothing) {
    auto tracker = MakeTracker();
    EXPECT_TRUE(Track(*tracker, Silence(1.0)).notes.empty());
    // Loud white noise is not periodic; quiet noise is also below the start level.
    for (double db : {-10.0, -20.0, -40.0}) {
        auto t = MakeTracker();
        EXPECT_TRUE(Track(*t, AddNoise(Silence(1.0), db, 11)).notes.empty()) << db << " dB";
    }
    // A clean tone below the start level (-24 dB peak) starts nothing either.
    auto quiet = MakeTracker();
    EXPECT_TRUE(Track(*quiet, Render({.frequency = 220, .seconds = 0.5, .levelDb = -30})).notes.empty());
}

TEST(PreciseNoteEvents, NoteEndsSoonAfterTheSoundStops) {
    auto tracker = MakeTracker();
    const TrackRun run = Track(*tracker, Concat({PlayedNote(60, 0.5), Silence(0.3)}));
    ASSERT_EQ(run.notes.size(), 1u);
    const double endSeconds = run.notes[0].offFrame * 16 / 44100.0;
    EXPECT_GT(endSeconds, 0.48);
    EXPECT_LT(endSeconds, 0.55);
}

TEST(PreciseNoteEvents, ReleasedNoteEndsAtItsReleaseNotWithItsTail) {
    // A held note, then a release of 200 dB per second (a synthesizer's release, a damped
    // string) that stays periodic and above the hold level for a while.
    std::vector<int16_t> note = Render({.frequency = NoteFrequency(64), .seconds = 0.8, .harmonics = {1, 0.5, 0.3}});
    const size_t release = static_cast<size_t>(0.4 * 44100);
    for (size_t i = release; i < note.size(); ++i) {
        note[i] = Saturate(note[i] * std::pow(10.0, -200.0 * (i - release) / 44100.0 / 20.0));
    }
    auto tracker = MakeTracker();
    const TrackRun run = Track(*tracker, Concat({note, Silence(0.1)}));
    ASSERT_EQ(NoteNumbers(run), std::vector<int>{64});
    // A fall of 9 dB below a ceiling that itself sinks by 20 dB/s takes 50 ms at this rate;
    // without the release detector the note would last until the tail fades below -36 dB.
    const double end = run.notes[0].offFrame * 16 / 44100.0;
    EXPECT_GT(end, 0.42);
    EXPECT_LT(end, 0.47);
}

TEST(PreciseNoteEvents, LevelModesWriteVelocityAndExpressionLikeTheEngine) {
    const std::vector<int16_t> tone = Concat({Render({.frequency = 330, .seconds = 0.3, .levelDb = -12}), Silence(0.1)});
    auto firstOn = [](const TrackRun& run) {
        for (const WFETMidiOut& o : run.outputs) {
            if (o.noteOn >= 0) return o;
        }
        return WFETMidiOut{-1, -1, -1, -1, -1};
    };
    // -12 dBFS peak between a -36 dB floor and a -6 dB ceiling: level 101.
    auto expression = MakeTracker({.levelMode = WFET_LEVEL_EXPRESSION});
    const WFETMidiOut e = firstOn(Track(*expression, tone));
    EXPECT_EQ(e.velocity, 127);
    EXPECT_NEAR(e.expression, 101, 3);
    auto velocity = MakeTracker({.levelMode = WFET_LEVEL_VELOCITY});
    const WFETMidiOut v = firstOn(Track(*velocity, tone));
    EXPECT_NEAR(v.velocity, 101, 3);
    EXPECT_EQ(v.expression, 127);
    auto relative = MakeTracker({.levelMode = WFET_LEVEL_RELATIVE});
    const TrackRun r = Track(*relative, tone);
    EXPECT_EQ(firstOn(r).expression, 96);
    EXPECT_NEAR(r.outputs[r.outputs.size() / 2].expression, 96, 6) << "steady level keeps expression near 96";
    // Mode 3 leaves the caller's velocity and expression alone.
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
    auto tracker = MakeTracker({.bendRange = 2});
    const TrackRun run = Track(*tracker, Render({.frequency = NoteFrequency(60.5), .seconds = 0.5}), 2);
    ASSERT_EQ(run.notes.size(), 1u);
    const int16_t bend = run.outputs.back().bend;
    EXPECT_NEAR(bend, 8192 + (run.notes[0].note == 60 ? 1 : -1) * 8191 / 4, 40);
}

TEST(PreciseNoteEvents, OutputDoesNotDependOnHowTheInputIsCutIntoBlocks) {
    const std::vector<int16_t> signal = AddNoise(
        Concat({PlayedNote(55, 0.3), Silence(0.05), PlayedNote(62, 0.3),
                Render({.frequency = NoteFrequency(50), .seconds = 0.5, .vibratoCents = 40})}),
        -50);
    auto reference = MakeTracker();
    const TrackRun whole = Track(*reference, signal);
    ASSERT_FALSE(whole.notes.empty());
    for (size_t block : {32u, 48u, 256u, 1024u, 4096u}) {
        auto tracker = MakeTracker();
        const TrackRun cut = Track(*tracker, signal, 4, block);
        ASSERT_EQ(cut.outputs.size(), whole.outputs.size());
        for (size_t f = 0; f < cut.outputs.size(); ++f) {
            const WFETMidiOut &a = cut.outputs[f], &b = whole.outputs[f];
            ASSERT_TRUE(a.noteOff == b.noteOff && a.noteOn == b.noteOn && a.velocity == b.velocity &&
                        a.bend == b.bend && a.expression == b.expression)
                << "frame " << f << " with blocks of " << block;
        }
    }
}

TEST(PreciseNoteEvents, ProcessingAndParameterChangesAllocateNothing) {
    std::vector<int16_t> signal = Concat({PlayedNote(45, 2.0), AddNoise(Silence(1.0), -30), PlayedNote(64, 2.0)});
    auto tracker = MakeTracker();
    WFETMidiOut out{-1, -1, 0, 8192, 0};
    int notes = 0;
    gAllocations = 0;
    gCounting = true;
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t i = 0; i + 16 <= signal.size(); i += 16) {
            tracker->Process(signal.data() + i, 32);
            tracker->Calc(&out);
            notes += out.noteOn >= 0 ? 1 : 0;
            if (i % 88000 == 0) {
                // Rate and range changes re-derive the analysis in place.
                tracker->Set(WFET_SAMPLE_RATE, pass == 0 ? 192000 : 44100);
                tracker->Set(WFET_MIN_NOTE, 11);
                tracker->Set(WFET_MAX_FREQ, pass == 0 ? 90000 : 2000);
                tracker->Set(WFET_MIN_NOTE, 36);
                tracker->Set(WFET_BEND_RANGE, 3);
            }
        }
    }
    gCounting = false;
    EXPECT_EQ(gAllocations.load(), 0);
    EXPECT_GT(notes, 0);
}

} // namespace
