// The router's ledger of sounding notes and its queue to the audio side.
#include "LiveMidiRouter.h"
#include "LiveTestSupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace vocato::test {
namespace {

namespace midi = media::midi;

class Router : public ::testing::Test {
protected:
    std::vector<media::MidiMessage> Drain() {
        std::vector<media::MidiMessage> out;
        app::QueuedMidi event;
        while (router.Next(event)) {
            out.push_back(event.message);
        }
        return out;
    }

    VocatoNode node{nullptr, nullptr, "", 1, WithoutSynth()};
    app::LiveMidiRouter router{node};
};

// Silencing itself is seen on a JACK server; what the ledger counts as sounding is seen here.
TEST_F(Router, TheAllNotesOffSweepPassesOnlyTheNoteOffsThatEndANote) {
    router.SetAudioSide(true);
    router.Send(midi::NoteOn(1, 69, 100), 0);
    router.Send(midi::NoteOn(2, 50, 100), 0);
    router.Send(midi::NoteOn(2, 50, 0), 0); // velocity 0 ends the note too
    Drain();
    router.AllNotesOff(false, 0); // controller 123 and a note-off for every key of every channel
    const auto out = Drain();
    ASSERT_EQ(out.size(), 16u + 1u);
    EXPECT_EQ(out[1], midi::NoteOff(1, 69, 0));
}

TEST_F(Router, NothingIsQueuedWithoutAnAudioSideAndAFullQueueDropsAndCounts) {
    router.Send(midi::ControlChange(1, 11, 100), 0);
    EXPECT_TRUE(Drain().empty());
    router.SetAudioSide(true);
    for (size_t i = 0; i < app::LiveMidiRouter::kQueueCapacity + 5; ++i) {
        router.Send(midi::ControlChange(1, 11, static_cast<uint8_t>(i & 0x7F)), 0);
    }
    EXPECT_EQ(router.Dropped(), 5u);
    EXPECT_EQ(Drain().size(), app::LiveMidiRouter::kQueueCapacity);
}

} // namespace
} // namespace vocato::test
