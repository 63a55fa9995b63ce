// The node with the real engine, fed with audio that FluidSynth renders from a known melody,
// and its own MIDI played back on FluidSynth.
#include "Fixtures.h"

#include "MidiRecording.h"
#include "VocatoNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace vocato;
using vocato::test::Note;

namespace {

struct Heard {
    int key;
    uint32_t onMs;
    bool operator==(const Heard&) const = default;
};

class RealNode {
public:
    RealNode(double rate, int32_t preset, int32_t program = 0, bool synth = false) {
        NodeOptions options;
        options.clock = &clock_;
        options.internalSynth = synth;
        options.synthRate = rate;
        node_ = std::make_unique<VocatoNode>(&window_, nullptr, "", 1, std::move(options));
        node_->NodeRegistered();
        int32_t cookie = 0;
        media::MediaInput input;
        node_->GetNextInput(&cookie, &input);
        media::MediaFormat format;
        format.type = media::MediaType::RawAudio;
        format.raw.frameRate = rate;
        format.raw.channelCount = 1;
        node_->Connected({1, 1}, input.destination, format, &input);
        node_->SetParameterValue(PARAM_PRESET, clock_.NowMicros(), &preset, 4);
        node_->SetParameterValue(PARAM_PROGRAM, clock_.NowMicros(), &program, 4);
        node_->RunEvents();
        node_->Start(0);
        ConnectMidiStore(*node_, window_, 1 << 16);
    }

    // Feeds the audio in buffers of `frames`; after each buffer `afterBuffer(frames done)`.
    template <typename F> void Run(const std::vector<float>& audio, size_t frames, F afterBuffer) {
        std::vector<int16_t> buffer(frames);
        for (size_t at = 0; at < audio.size(); at += frames) {
            const size_t n = std::min(frames, audio.size() - at);
            for (size_t i = 0; i < n; ++i) {
                buffer[i] = static_cast<int16_t>(std::lrint(audio[at + i] * 32767.0f));
            }
            media::Buffer b;
            b.data = buffer.data();
            b.sizeUsed = n * 2;
            node_->BufferReceived(b);
            afterBuffer(n);
        }
    }
    void Run(const std::vector<float>& audio, size_t frames) {
        Run(audio, frames, [](size_t) {});
    }

    std::vector<Heard> NotesOn() const {
        std::vector<Heard> notes;
        const media::MidiStore& store = *window_.recording.Kept();
        for (size_t i = 0; i < store.CountEvents(); ++i) {
            const auto& e = store.EventAt(i);
            if (e.message.Status() == media::midi::kNoteOn && e.message.bytes[2] != 0) {
                notes.push_back({e.message.bytes[1], e.stampMs});
            }
        }
        return notes;
    }
    // The key of the note sounding at `ms`, -1 for none.
    int SoundingAt(uint32_t ms) const {
        int key = -1;
        for (const media::StoredEvent& e : Events()) {
            if (e.stampMs > ms) {
                break;
            }
            const bool on = e.message.Status() == media::midi::kNoteOn && e.message.bytes[2] != 0;
            if (on) {
                key = e.message.bytes[1];
            } else if (e.message.Status() == media::midi::kNoteOff && e.message.bytes[1] == key) {
                key = -1;
            }
        }
        return key;
    }
    std::vector<media::StoredEvent> Events() const {
        const media::MidiStore& store = *window_.recording.Kept();
        return {&store.EventAt(0), &store.EventAt(0) + store.CountEvents()};
    }
    VocatoNode& Node() { return *node_; }

private:
    media::ManualClock clock_{6'000'000};
    media::DisplaySink window_;
    std::unique_ptr<VocatoNode> node_;
};

// The double reed gives the classic engine clean attacks.
constexpr int32_t kOboe = 68;
constexpr int32_t kOboePreset = 19;

const std::vector<Note> kMelody = {
    {72, 0.30, 0.60}, {76, 0.75, 1.05}, {79, 1.20, 1.50},
    {77, 1.65, 1.95}, {74, 2.10, 2.40}, {72, 2.55, 2.85},
};

// The classic engine may stumble at an attack (a re-trigger, a neighbouring note for a few
// milliseconds), so each melody note is judged by what sounds at its middle, and its onset by
// the first note-on of its key.
void ExpectMelodyHeard(const RealNode& node) {
    for (const Note& n : kMelody) {
        const auto middle = static_cast<uint32_t>(500.0 * (n.onset + n.offset));
        EXPECT_EQ(node.SoundingAt(middle), n.key) << "at " << middle << " ms";
        const auto onset = static_cast<uint32_t>(1000.0 * n.onset);
        const auto heard = node.NotesOn();
        const auto first = std::find_if(heard.begin(), heard.end(), [&](const Heard& h) {
            return h.key == n.key && h.onMs >= onset;
        });
        ASSERT_NE(first, heard.end()) << "note " << n.key;
        EXPECT_LE(first->onMs, onset + 60) << "note " << n.key;
    }
}

} // namespace

TEST(ClosedLoop, AnOboeMelodyRenderedByFluidSynthComesBackAsItsNotes) {
    RealNode node(44100, kOboePreset);
    node.Run(test::RenderMelody(kMelody, kOboe, 44100), 1024);
    ExpectMelodyHeard(node);
}

TEST(ClosedLoop, At48kHzTheSameMelodyGivesTheSameNotesAtTheSameTimes) {
    RealNode node(48000, kOboePreset);
    node.Run(test::RenderMelody(kMelody, kOboe, 48000), 1024);
    ExpectMelodyHeard(node);
}

TEST(ClosedLoop, BuffersCutAtMultiplesOf16SamplesGiveIdenticalMidi) {
    const std::vector<float> audio = test::RenderMelody(kMelody, kOboe, 44100);
    RealNode reference(44100, kOboePreset);
    reference.Run(audio, 1024);
    for (size_t frames : {16u, 64u, 160u, 4096u}) {
        RealNode other(44100, kOboePreset);
        other.Run(audio, frames);
        const auto a = reference.Events();
        const auto b = other.Events();
        ASSERT_EQ(a.size(), b.size()) << frames;
        for (size_t i = 0; i < a.size(); ++i) {
            ASSERT_EQ(a[i].stampMs, b[i].stampMs) << frames << " event " << i;
            ASSERT_EQ(a[i].message, b[i].message) << frames << " event " << i;
        }
    }
}

TEST(ClosedLoop, WhatTheNodeSendsSoundsOnTheSynthesizerAtThePitchItHeard) {
    constexpr double kRate = 44100;
    RealNode node(kRate, 1, 73, true);
    ASSERT_NE(node.Node().Synth(), nullptr) << "install fluid-soundfont-gm";
    ASSERT_TRUE(node.Node().Synth()->Enabled());
    const std::vector<float> tone = test::Sine(440.0, kRate, 1.5, 0.5);
    std::vector<float> left(tone.size()), right(tone.size());
    size_t rendered = 0;
    node.Run(tone, 512, [&](size_t n) {
        node.Node().Synth()->Render(left.data() + rendered, right.data() + rendered, n);
        rendered += n;
    });
    ASSERT_EQ(node.NotesOn().size(), 1u);
    EXPECT_EQ(node.NotesOn()[0].key, 69);
    const size_t from = tone.size() / 2;
    const double hz = test::EstimatePitchHz(left.data() + from, 8192, kRate);
    EXPECT_NEAR(test::Cents(hz, 440.0), 0.0, 25.0) << hz << " Hz";
}
