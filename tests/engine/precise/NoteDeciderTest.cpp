// The note decision on its own, fed the frames an analysis would give: what a frame of
// something else does to a sounding note.
#include "precise/NoteDecider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

namespace {

using vocato::precise::FrameFeatures;
using vocato::precise::NoteDecider;
using vocato::precise::PreciseSettings;

constexpr double kFrameSeconds = kWFETFrameSamples / 44100.0;

FrameFeatures Voiced(double note) {
    FrameFeatures f;
    f.frequency = 440.0 * std::exp2((note - 69.0) / 12.0);
    f.clarity = 0.97;
    f.level = 10000.0;
    f.power = f.level * f.level / 2;
    return f;
}

// The note-ons a fresh decider gives for the frames `frameAt` (its number to its features).
std::vector<int> NoteOnsOf(const std::function<FrameFeatures(size_t)>& frameAt, double seconds) {
    const PreciseSettings settings;
    NoteDecider decider;
    std::vector<int> ons;
    for (size_t frame = 0; frame * kFrameSeconds < seconds; ++frame) {
        FrameFeatures f = frameAt(frame);
        f.samples = kWFETFrameSamples;
        WFETMidiOut out{-1, -1, 0, 8192, 0};
        decider.Decide(settings, f, &out);
        if (out.noteOn >= 0) {
            ons.push_back(out.noteOn);
        }
    }
    return ons;
}

// The note-ons for `pitchAt` (seconds to a fractional note number, 0 for silence), with every
// frame listed in `strays` showing `strayNote` instead.
std::vector<int> NoteOns(const std::function<double(double)>& pitchAt, double seconds,
                         const std::vector<size_t>& strays = {}, double strayNote = 0.0) {
    return NoteOnsOf(
        [&](size_t frame) {
            const double pitch = pitchAt(frame * kFrameSeconds);
            const bool stray = std::ranges::find(strays, frame) != strays.end();
            return pitch > 0.0 ? Voiced(stray ? strayNote : pitch) : FrameFeatures{};
        },
        seconds);
}

// A wide vibrato (+-80 cents at 5.5 Hz) reaches into both neighbours, and right after a
// semitone step the decision cannot yet tell a swing across the border from a second step: the
// note waits out the swing. In a room the analysis now and then shows, for an analysis or two,
// a partial of what the voice sang a moment ago, and then the pitch is back where the swing
// had brought it. That moment says nothing about how the pitch left the note: wherever the
// step falls in the swing, such frames on the swings after it add no note.
TEST(NoteDecision, AFrameOfAnotherPitchAddsNoNoteToAVibrato) {
    for (int k = 0; k < 8; ++k) {
        const double stepAt = 0.8 + k * 0.5 / 5.5 / 4;
        const auto sung = [stepAt](double t) {
            if (t < 0.05) {
                return 0.0;
            }
            const double since = t - 0.05;
            return (t < stepAt ? 60.0 : 59.0) +
                   0.8 * std::min(1.0, since / 0.15) * std::sin(2 * std::numbers::pi * 5.5 * since);
        };
        const std::vector<int> clean = NoteOns(sung, 1.5);
        ASSERT_FALSE(clean.empty()) << stepAt;
        ASSERT_EQ(clean.back(), 59) << stepAt;
        for (const double strayNote : {67.0, 48.0}) {
            std::vector<size_t> strays;
            for (double t = stepAt; t < stepAt + 0.2; t += 0.004) {
                const double offset = std::abs(sung(t) - 59.0);
                if (offset > 0.3 && offset < 0.5) {
                    strays.push_back(static_cast<size_t>(t / kFrameSeconds));
                }
            }
            const std::vector<int> strayed = NoteOns(sung, 1.5, strays, strayNote);
            ASSERT_FALSE(strayed.empty()) << stepAt << ", " << strayNote;
            EXPECT_LE(strayed.size(), clean.size()) << stepAt << ", " << strayNote;
            EXPECT_EQ(strayed.back(), 59) << stepAt << ", " << strayNote;
        }
    }
}

// In a room the fundamental of a released note may sink under one of its partials, and the
// analysis of the tail then shows that partial on every other frame. That is the note's tail,
// however clearly periodic, until an attack strikes something new: then a note at that
// harmonic starts like any other.
TEST(NoteDecision, ATailReadAtAHarmonicOfTheReleasedNoteStartsNothing) {
    constexpr size_t kReleased = 300;
    for (const double reading : {83.0, 90.0, 95.0}) {
        for (const size_t attackAt : {size_t{360}, size_t{0}}) {
            const auto frameAt = [&](size_t frame) {
                if (frame < 20) {
                    return FrameFeatures{};
                }
                if (frame < kReleased) {
                    return Voiced(71.0);
                }
                if (attackAt > 0 && frame >= attackAt) {
                    FrameFeatures f = Voiced(reading);
                    f.attack = frame == attackAt;
                    return f;
                }
                FrameFeatures f = Voiced(frame % 2 == 0 ? reading : 71.0);
                f.clarity = frame % 2 == 0 ? 0.9 : 0.99;
                f.release = frame == kReleased;
                f.faded = true;
                return f;
            };
            const std::vector<int> ons = NoteOnsOf(frameAt, 0.3);
            ASSERT_FALSE(ons.empty());
            EXPECT_EQ(ons.front(), 71) << reading;
            if (attackAt == 0) {
                EXPECT_EQ(ons.size(), 1u) << reading;
            } else {
                EXPECT_EQ(ons.back(), int(reading)) << reading;
            }
        }
    }
}

} // namespace
