// The node with the real engine, fed with audio that FluidSynth renders from a known melody,
// and its own MIDI played back on FluidSynth.
#include "NodeRig.h"

#include "Fixtures.h"
#include "MidiRecording.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace vocato;
using vocato::test::Note;

namespace {

struct RealNode : test::NodeRig {
    RealNode(double rate, int32_t preset, int32_t program = 0, bool synth = false)
        : NodeRig({.scripted = false, .synth = synth}) {
        clock.Set(6'000'000); // the first buffer puts the MIDI clock at 0 ms
        Connect(1, rate);
        Set(PARAM_PRESET, preset);
        Set(PARAM_PROGRAM, program);
        node->Start(0);
        ConnectMidiStore(*node, window, 1 << 16);
    }
    // Feeds the audio in buffers of `frames`; after each buffer `afterBuffer(frames done)`.
    void Run(
        const std::vector<float>& audio, size_t frames,
        const std::function<void(size_t)>& afterBuffer = [](size_t) {}) {
        for (size_t at = 0; at < audio.size(); at += frames) {
            std::vector<int16_t> buffer(std::min(frames, audio.size() - at));
            for (size_t i = 0; i < buffer.size(); ++i) {
                buffer[i] = static_cast<int16_t>(std::lrint(audio[at + i] * 32767.0f));
            }
            Feed(buffer);
            afterBuffer(buffer.size());
        }
    }
    std::vector<media::StoredEvent> Events() const {
        const media::MidiStore& store = *window.recording.Kept();
        return {&store.EventAt(0), &store.EventAt(0) + store.CountEvents()};
    }
    static bool IsOn(const media::StoredEvent& e) {
        return e.message.Status() == media::midi::kNoteOn && e.message.bytes[2] != 0;
    }
    // The key of the note sounding at `ms`, -1 for none.
    int SoundingAt(uint32_t ms) const {
        int key = -1;
        for (const media::StoredEvent& e : Events()) {
            if (e.stampMs > ms) {
                break;
            }
            if (IsOn(e)) {
                key = e.message.bytes[1];
            } else if (e.message.Status() == media::midi::kNoteOff && e.message.bytes[1] == key) {
                key = -1;
            }
        }
        return key;
    }
};

// The double reed gives the engine clean attacks.
constexpr int32_t kOboe = 68;
constexpr int32_t kOboePreset = 19;

const std::vector<Note> kMelody = {
    {72, 0.30, 0.60}, {76, 0.75, 1.05}, {79, 1.20, 1.50},
    {77, 1.65, 1.95}, {74, 2.10, 2.40}, {72, 2.55, 2.85},
};

// The engine may stumble at an attack (a re-trigger, a neighbouring note for a few
// milliseconds), so each melody note is judged by what sounds at its middle, and its onset by
// the first note-on of its key.
void ExpectMelodyHeard(const RealNode& node) {
    const auto events = node.Events();
    for (const Note& n : kMelody) {
        const auto middle = static_cast<uint32_t>(500.0 * (n.onset + n.offset));
        EXPECT_EQ(node.SoundingAt(middle), n.key) << "at " << middle << " ms";
        const auto onset = static_cast<uint32_t>(1000.0 * n.onset);
        const auto first = std::find_if(events.begin(), events.end(), [&](const auto& e) {
            return RealNode::IsOn(e) && e.message.bytes[1] == n.key && e.stampMs >= onset;
        });
        ASSERT_NE(first, events.end()) << "note " << n.key;
        EXPECT_LE(first->stampMs, onset + 60) << "note " << n.key;
    }
}

} // namespace

TEST(ClosedLoop, AnOboeMelodyComesBackAsItsNotesAtEitherRate) {
    for (double rate : {48000.0, 44100.0}) {
        SCOPED_TRACE(rate);
        RealNode node(rate, kOboePreset);
        node.Run(test::RenderMelody(kMelody, kOboe, rate), 1024);
        ExpectMelodyHeard(node);
    }
}

TEST(ClosedLoop, WhatTheNodeSendsSoundsOnTheSynthesizerAtThePitchItHeard) {
    RealNode node(44100, 1, 73, true);
    ASSERT_NE(node.node->Synth(), nullptr) << "install fluid-soundfont-gm";
    ASSERT_TRUE(node.node->Synth()->Enabled());
    const std::vector<float> tone = test::Sine(440.0, 44100, 1.5, 0.5);
    std::vector<float> left(tone.size()), right(tone.size());
    size_t rendered = 0;
    node.Run(tone, 512, [&](size_t n) {
        node.node->Synth()->Render(left.data() + rendered, right.data() + rendered, n);
        rendered += n;
    });
    const auto events = node.Events();
    std::vector<int> keys;
    for (const auto& e : events) {
        if (RealNode::IsOn(e)) {
            keys.push_back(e.message.bytes[1]);
        }
    }
    EXPECT_EQ(keys, std::vector<int>{69});
    const double hz = test::EstimatePitchHz(left.data() + tone.size() / 2, 8192, 44100);
    EXPECT_NEAR(test::Cents(hz, 440.0), 0.0, 25.0) << hz << " Hz";
}
