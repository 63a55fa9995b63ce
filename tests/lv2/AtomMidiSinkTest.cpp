// The MIDI sink that writes into the host's atom sequence, and the sample conversion.
#include "AtomMidiSink.h"
#include "SampleConversion.h"
#include "TestHost.h"

#include <gtest/gtest.h>
#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <cmath>

namespace vocato::lv2::test {
namespace {

namespace midi = media::midi;

// Where the events land is seen through the plugin; a host's small or missing buffer is not.
TEST(AtomSink, DropsAndCountsWholeEventsItHasNoRoomFor) {
    UridMap urids;
    AtomMidiSink sink(&urids.map);
    std::vector<uint64_t> buffer(1024);
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(buffer.data());
    const auto run = [&](uint32_t capacity, int events) {
        sequence->atom.size = capacity;
        sink.Begin(capacity == 0 ? nullptr : sequence);
        for (int i = 0; i < events; ++i) {
            sink.Send(midi::ControlChange(1, midi::kExpression, static_cast<uint8_t>(i)), 0);
        }
        sink.End();
        size_t written = 0;
        LV2_ATOM_SEQUENCE_FOREACH(sequence, ev) {
            EXPECT_EQ(ev->body.type, urids.Map(LV2_MIDI__MidiEvent));
            EXPECT_EQ(ev->body.size, 3u);
            ++written;
        }
        return written;
    };
    // Room for the sequence header and two events of 24 bytes, plus 10 spare bytes.
    EXPECT_EQ(run(sizeof(LV2_Atom_Sequence) + 2 * 24 + 10, 5), 2u);
    EXPECT_EQ(sink.Dropped(), 3u);
    // With no output connected a run drops its events, and they do not reach the next run.
    run(0, 1);
    EXPECT_EQ(sink.Dropped(), 4u);
    EXPECT_EQ(run(4096, 0), 0u);
}

TEST(SampleConversion, EverySixteenBitSampleSurvivesTheTripAndOutOfRangeSaturates) {
    for (int s = -32768; s <= 32767; ++s) {
        ASSERT_EQ(SampleToInt16(static_cast<float>(s) / 32768.0f), s);
    }
    const std::pair<float, int16_t> edges[] = {{1.0f, 32767},      {-1.0f, -32768},    {7.5f, 32767},
                                               {-INFINITY, -32768}, {INFINITY, 32767}, {NAN, 0},
                                               {-0.0f, 0}};
    for (auto [sample, expected] : edges) {
        EXPECT_EQ(SampleToInt16(sample), expected) << sample;
    }
}

} // namespace
} // namespace vocato::lv2::test
