// The node thread never allocates: ten seconds of audio through the real engine, a preset
// change and a parameter change, with every operator new counted.
#include "CountingNew.h"
#include "Fixtures.h"
#include "NodeRig.h"

#include "MidiRecording.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(NodeThread, TenSecondsOfAudioAndAPresetChangeAllocateNothing) {
    using namespace vocato;
    test::NodeRig rig({.scripted = false});
    rig.sink.sent.reserve(1 << 16); // the capturing sink must not allocate either
    rig.sink.stamps.reserve(1 << 16);
    rig.ConnectAndStart(2);
    ASSERT_TRUE(ConnectMidiStore(*rig.node, rig.window, 1 << 16));

    // A tone that comes and goes, so notes, bends and expression are all sent and recorded.
    const std::vector<float> tone = test::Sine(330.0, 44100, 0.5, 0.5);
    std::vector<int16_t> stereo(2 * 512);
    const int32_t preset = 3;
    const float transpose = 2.0f;
    rig.node->SetParameterValue(PARAM_PRESET, rig.clock.NowMicros(), &preset, 4);

    test::StartCountingAllocations();
    for (size_t buffer = 0; buffer < 10 * 44100 / 512; ++buffer) {
        for (size_t i = 0; i < 512; ++i) {
            const size_t at = (buffer * 512 + i) % (2 * tone.size());
            const float v = at < tone.size() ? tone[at] : 0.0f;
            stereo[2 * i] = stereo[2 * i + 1] = static_cast<int16_t>(std::lrint(v * 32767.0f));
        }
        if (buffer == 400) {
            rig.node->SetParameterValue(PARAM_TRANSPOSE, rig.clock.NowMicros(), &transpose, 4);
        }
        media::Buffer b;
        b.data = stereo.data();
        b.sizeUsed = stereo.size() * 2;
        rig.node->BufferReceived(b);
    }
    EXPECT_EQ(test::StopCountingAllocations(), 0u);
    EXPECT_EQ(rig.Get(PARAM_PRESET), 3);
    EXPECT_GT(rig.window.recording.Kept()->CountEvents(), kOpeningEvents + 20);
}
