#include "NodeRig.h"

#include <gtest/gtest.h>

#include <numeric>

namespace midi = vocato::media::midi;
using vocato::test::Decision;
using vocato::test::NodeRig;

namespace {

constexpr double kStep = 0.36281179138321995; // 16 samples at 44100 Hz, in ms

std::vector<int16_t> Ramp(size_t n) {
    std::vector<int16_t> v(n);
    std::iota(v.begin(), v.end(), int16_t{1});
    return v;
}

} // namespace

TEST(BufferPath, TheFirstBufferAfterStartSetsTheClockSixSecondsBehindTheSystemClock) {
    NodeRig rig;
    rig.Connect();
    rig.node->Start(0);
    rig.clock.Set(10'000'000);
    rig.Feed(Ramp(16));
    EXPECT_EQ(rig.node->MidiClock(), 4000.0 + kStep);
    rig.clock.Set(99'000'000); // a running clock is not re-based
    rig.Feed(Ramp(16));
    EXPECT_EQ(rig.node->MidiClock(), 4000.0 + kStep + kStep);
}

TEST(BufferPath, AStereoBufferOf4096BytesRuns64FramesOnTheLeftChannel) {
    NodeRig rig;
    rig.Connect(2);
    rig.node->Start(0);
    std::vector<int16_t> stereo(2048);
    for (size_t i = 0; i < 1024; ++i) {
        stereo[2 * i] = static_cast<int16_t>(i);        // left
        stereo[2 * i + 1] = static_cast<int16_t>(-999); // right
    }
    rig.Feed(stereo);
    ASSERT_EQ(rig.script->processedBytes.size(), 64u);
    for (size_t f = 0; f < 64; ++f) {
        EXPECT_EQ(rig.script->processedBytes[f], 32u);
        EXPECT_EQ(rig.script->firstSamples[f], static_cast<int16_t>(16 * f));
    }
    EXPECT_NEAR(rig.node->MidiClock() - 4000.0, 23.22, 0.005);
}

TEST(BufferPath, SixChannelsUseTheFirstChannel) {
    NodeRig rig;
    rig.Connect(6);
    rig.node->Start(0);
    std::vector<int16_t> six(6 * 32, 7);
    for (size_t i = 0; i < 32; ++i) {
        six[6 * i] = static_cast<int16_t>(100 + i);
    }
    rig.Feed(six);
    EXPECT_EQ(rig.script->processedBytes, (std::vector<uint32_t>{32, 32}));
    EXPECT_EQ(rig.script->firstSamples, (std::vector<int16_t>{100, 116}));
}

TEST(BufferPath, AMonoBufferOf1000BytesEndsWithAShortFrame) {
    NodeRig rig;
    rig.Connect(1);
    rig.node->Start(0);
    rig.Feed(Ramp(500));
    std::vector<uint32_t> expected(31, 32);
    expected.push_back(8);
    EXPECT_EQ(rig.script->processedBytes, expected);
    EXPECT_EQ(rig.node->MidiClock(), [] {
        double c = 4000.0;
        for (int i = 0; i < 32; ++i) {
            c += kStep;
        }
        return c;
    }());
}

TEST(BufferPath, AnOddByteCountStillRunsAFrameForTheLastByte) {
    NodeRig rig;
    rig.Connect(1);
    rig.node->Start(0);
    rig.Feed(Ramp(17), 33);
    EXPECT_EQ(rig.script->processedBytes, (std::vector<uint32_t>{32, 1}));
}

TEST(BufferPath, ExpressionAndBendAreSentOnlyWhenTheyMoveBeyondTheirThresholds) {
    NodeRig rig;
    rig.Connect();
    rig.node->Start(0);
    rig.sink.sent.clear();
    // After construction the node last sent expression 127 and no bend (0).
    rig.script->outputs = {Decision(-1, -1, 0, 64, 123), Decision(-1, -1, 0, 65, 122)};
    rig.Feed(Ramp(32));
    EXPECT_EQ(rig.sink.Messages(),
              (std::vector<vocato::media::MidiMessage>{midi::ControlChange(1, 11, 122),
                                                       midi::PitchBend(1, 65, 0)}));
}

TEST(BufferPath, OneFrameSendsExpressionBendNoteOffNoteOnInThatOrderTransposed) {
    NodeRig rig;
    rig.Connect();
    rig.SetFloat(vocato::PARAM_TRANSPOSE, -12.0f);
    rig.node->Start(0);
    rig.sink.sent.clear();
    rig.script->outputs = {Decision(64, 66, 90, 8192, 100)};
    rig.Feed(Ramp(16));
    EXPECT_EQ(rig.sink.Messages(), (std::vector<vocato::media::MidiMessage>{
                                       midi::ControlChange(1, 11, 100), midi::PitchBend(1, 0, 64),
                                       midi::NoteOff(1, 52, 0), midi::NoteOn(1, 54, 90)}));
    EXPECT_EQ(rig.window.displayNote.load(), 54.0f);
}

TEST(BufferPath, AFractionalTranspositionTruncatesTowardZero) {
    NodeRig rig;
    rig.Connect();
    rig.SetFloat(vocato::PARAM_TRANSPOSE, 0.5f);
    rig.node->Start(0);
    rig.sink.sent.clear();
    rig.script->outputs = {Decision(-1, 60, 90, 0, 127)};
    rig.Feed(Ramp(16));
    EXPECT_EQ(rig.sink.Messages().back(), midi::NoteOn(1, 60, 90));
}

TEST(BufferPath, TheOscilloscopeGetsTheFirst128MonoSamplesAndAShortBufferOnlyItsOwn) {
    NodeRig rig;
    rig.Connect(2);
    std::vector<int16_t> stereo(512);
    for (size_t i = 0; i < 256; ++i) {
        stereo[2 * i] = static_cast<int16_t>(i + 1);
    }
    rig.Feed(stereo);
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
    rig.Connect();
    rig.node->Start(0);
    rig.Feed(Ramp(16));
    const double clock = rig.node->MidiClock();
    const size_t frames = rig.script->processedBytes.size();
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
    EXPECT_EQ(rig.GetFloat(vocato::PARAM_TRANSPOSE), 7.0f);
    EXPECT_EQ(rig.node->MidiClock(), clock);
    EXPECT_EQ(rig.script->processedBytes.size(), frames);
}
