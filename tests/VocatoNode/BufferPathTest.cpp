#include "NodeRig.h"

#include <gtest/gtest.h>

namespace midi = vocato::media::midi;
using vocato::media::MidiMessage;
using vocato::test::NodeRig;

namespace {

constexpr double kStep = 0.36281179138321995; // 16 samples at 44100 Hz, in ms

// The first channel counts up from 1; every other channel holds -999.
std::vector<int16_t> Ramp(size_t frames, uint32_t channels = 1) {
    std::vector<int16_t> v(frames * channels, -999);
    for (size_t i = 0; i < frames; ++i) {
        v[i * channels] = static_cast<int16_t>(i + 1);
    }
    return v;
}

} // namespace

// The first buffer after Start puts the MIDI clock 6 s behind the system clock (10 s here).
TEST(BufferPath, BuffersRunIn16SampleFramesOfTheFirstChannelAndAShortLastFrame) {
    struct Case {
        uint32_t channels;
        size_t frames;
        size_t bytes;
        std::vector<uint32_t> processed;
    };
    std::vector<uint32_t> stereo4096(64, 32), mono1000(31, 32);
    mono1000.push_back(8);
    for (const Case& c : {Case{2, 1024, 4096, stereo4096}, Case{6, 32, 6 * 64, {32, 32}},
                          Case{1, 500, 1000, mono1000}, Case{1, 17, 33, {32, 1}}}) {
        NodeRig rig;
        rig.ConnectAndStart(c.channels);
        rig.Feed(Ramp(c.frames, c.channels), c.bytes);
        EXPECT_EQ(rig.script->processedBytes, c.processed) << c.channels << " " << c.bytes;
        double clock = 4000.0;
        for (size_t f = 0; f < c.processed.size(); ++f) {
            const auto first = static_cast<int16_t>(c.processed[f] >= 2 ? 16 * f + 1 : 0);
            EXPECT_EQ(rig.script->firstSamples[f], first);
            clock += kStep;
        }
        EXPECT_EQ(rig.node->MidiClock(), clock) << c.channels << " " << c.bytes;
        rig.clock.Set(99'000'000); // a running clock is not re-based
        rig.Feed(Ramp(16, c.channels));
        EXPECT_EQ(rig.node->MidiClock(), clock + kStep);
    }
}

TEST(BufferPath, EachFrameSendsExpressionBendNoteOffNoteOnInOrderBeyondThresholdsTransposed) {
    NodeRig rig;
    rig.Connect();
    rig.Set(vocato::PARAM_TRANSPOSE, -11.5f); // 66 - 11.5 truncates toward zero to 54
    rig.node->Start(0);
    rig.sink.Clear();
    // After construction the node last sent expression 127 and no bend (0).
    rig.script->outputs = {{-1, -1, 0, 64, 123}, {-1, -1, 0, 65, 122}, {64, 66, 90, 8192, 100}};
    rig.Feed(Ramp(48));
    EXPECT_EQ(rig.sink.sent,
              (std::vector<MidiMessage>{midi::ControlChange(1, 11, 122), midi::PitchBend(1, 65, 0),
                                        midi::ControlChange(1, 11, 100), midi::PitchBend(1, 0, 64),
                                        midi::NoteOff(1, 52, 0), midi::NoteOn(1, 54, 90)}));
    EXPECT_EQ(rig.window.displayNote.load(), 54.0f);
}

TEST(BufferPath, TheOscilloscopeGetsTheFirst128MonoSamplesAndAShortBufferOnlyItsOwn) {
    NodeRig rig;
    rig.Connect(2);
    rig.Feed(Ramp(256, 2));
    int16_t shown[128];
    ASSERT_TRUE(rig.window.oscilloBuffer.Read(shown));
    EXPECT_EQ(shown[0], 1);
    EXPECT_EQ(shown[127], 128);
    rig.Feed(std::vector<int16_t>(8, -5));
    ASSERT_TRUE(rig.window.oscilloBuffer.Read(shown));
    EXPECT_EQ(shown[3], -5);
    EXPECT_EQ(shown[4], 5);
}

TEST(BufferPath, AParameterBufferAppliesItsValuesWithoutAFrame) {
    NodeRig rig;
    rig.ConnectAndStart();
    rig.Feed(Ramp(16));
    const double clock = rig.node->MidiClock();
    struct {
        int32_t id;
        float value;
    } record{vocato::PARAM_TRANSPOSE, 7.0f};
    vocato::media::Buffer buffer;
    buffer.type = vocato::media::BufferType::Parameters;
    buffer.data = &record;
    buffer.sizeUsed = sizeof record;
    rig.node->BufferReceived(buffer);
    rig.node->RunEvents();
    EXPECT_EQ(rig.Get(vocato::PARAM_TRANSPOSE), 7.0f);
    EXPECT_EQ(rig.node->MidiClock(), clock);
    EXPECT_EQ(rig.script->processedBytes.size(), 1u);
}
