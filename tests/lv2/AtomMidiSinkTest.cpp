// The MIDI sink that writes into the host's atom sequence, and the sample conversion.
#include "AtomMidiSink.h"
#include "SampleConversion.h"
#include "TestHost.h"

#include <gtest/gtest.h>
#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <limits>
#include <vector>

namespace vocato::lv2::test {
namespace {

namespace midi = media::midi;

class AtomSink : public ::testing::Test {
protected:
    UridMap urids;
    LV2_URID_Map* map = static_cast<LV2_URID_Map*>(urids.Feature()->data);
    AtomMidiSink sink{map};
    std::vector<uint64_t> buffer = std::vector<uint64_t>(1024);

    LV2_Atom_Sequence* Sequence(uint32_t capacity) {
        auto* s = reinterpret_cast<LV2_Atom_Sequence*>(buffer.data());
        s->atom.size = capacity;
        return s;
    }

    std::vector<MidiEvent> Read() {
        std::vector<MidiEvent> events;
        const auto* s = reinterpret_cast<const LV2_Atom_Sequence*>(buffer.data());
        EXPECT_EQ(s->atom.type, urids.Map(LV2_ATOM__Sequence));
        LV2_ATOM_SEQUENCE_FOREACH(s, ev) {
            EXPECT_EQ(ev->body.type, urids.Map(LV2_MIDI__MidiEvent));
            const auto* bytes = reinterpret_cast<const uint8_t*>(ev + 1);
            events.push_back({ev->time.frames, {bytes, bytes + ev->body.size}});
        }
        return events;
    }
};

TEST_F(AtomSink, EventsLandAtTheFrameSetBeforeThem) {
    sink.Begin(Sequence(4096));
    sink.SetFrame(15);
    sink.Send(midi::NoteOn(1, 60, 100), 0);
    sink.SetFrame(31);
    sink.Send(midi::PitchBend(1, 0, 64), 0);
    sink.Send(midi::ProgramChange(1, 5), 0);
    sink.End();
    EXPECT_EQ(Read(), (std::vector<MidiEvent>{
                          {15, {0x90, 60, 100}}, {31, {0xE0, 0, 64}}, {31, {0xC0, 5}}}));
}

TEST_F(AtomSink, AllNotesOffForEveryKeyShrinksToControllersAndTheSoundingNote) {
    sink.Begin(Sequence(4096));
    sink.Send(midi::NoteOn(3, 67, 90), 0);
    sink.AllNotesOff(false, 0);
    sink.End();
    const std::vector<MidiEvent> events = Read();
    ASSERT_EQ(events.size(), 1u + 16u + 1u);
    EXPECT_EQ(events[3].bytes, (std::vector<uint8_t>{0xB2, 123, 0}));
    EXPECT_EQ(events[4].bytes, (std::vector<uint8_t>{0x82, 67, 0}));
    size_t controllers = 0;
    for (const MidiEvent& e : events) {
        controllers += e.bytes[0] >= 0xB0 && e.bytes[0] <= 0xBF && e.bytes[1] == 123;
    }
    EXPECT_EQ(controllers, 16u);
}

TEST_F(AtomSink, EventsSentBetweenRunsOpenTheNextRunAtFrameZero) {
    sink.Send(midi::ProgramChange(1, 7), 0);
    sink.Begin(Sequence(4096));
    sink.SetFrame(47);
    sink.Send(midi::NoteOn(1, 50, 80), 0);
    sink.End();
    EXPECT_EQ(Read(), (std::vector<MidiEvent>{{0, {0xC0, 7}}, {47, {0x90, 50, 80}}}));
}

TEST_F(AtomSink, AFullBufferDropsWholeEventsAndCountsThem) {
    // Room for the sequence header and two events of 24 bytes, plus 10 spare bytes.
    sink.Begin(Sequence(sizeof(LV2_Atom_Sequence) + 2 * 24 + 10));
    for (int i = 0; i < 5; ++i) {
        sink.Send(midi::ControlChange(1, midi::kExpression, static_cast<uint8_t>(i)), 0);
    }
    sink.End();
    EXPECT_EQ(Read().size(), 2u);
    EXPECT_EQ(sink.Dropped(), 3u);
}

TEST_F(AtomSink, WithNoOutputConnectedARunDropsItsEvents) {
    sink.Begin(nullptr);
    sink.Send(midi::NoteOn(1, 60, 100), 0);
    sink.End();
    EXPECT_EQ(sink.Dropped(), 1u);
    sink.Begin(Sequence(4096));
    sink.End();
    EXPECT_TRUE(Read().empty());
}

TEST(SampleConversion, EverySixteenBitSampleSurvivesTheTripThroughFloat) {
    for (int s = -32768; s <= 32767; ++s) {
        ASSERT_EQ(SampleToInt16(static_cast<float>(s) / 32768.0f), s);
    }
}

TEST(SampleConversion, OutOfRangeSaturatesAndNanIsSilence) {
    EXPECT_EQ(SampleToInt16(1.0f), 32767);
    EXPECT_EQ(SampleToInt16(-1.0f), -32768);
    EXPECT_EQ(SampleToInt16(7.5f), 32767);
    EXPECT_EQ(SampleToInt16(-std::numeric_limits<float>::infinity()), -32768);
    EXPECT_EQ(SampleToInt16(std::numeric_limits<float>::infinity()), 32767);
    EXPECT_EQ(SampleToInt16(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(SampleToInt16(-0.0f), 0);
}

} // namespace
} // namespace vocato::lv2::test
