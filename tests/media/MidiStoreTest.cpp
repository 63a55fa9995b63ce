#include "MidiStore.h"
#include "RecordingSlot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace midi = vocato::media::midi;
using vocato::media::MidiStore;
using vocato::media::RecordingSlot;

TEST(MidiStore, AFullStoreRefusesAndCountsAndMakingRoomKeepsEveryEventInOrder) {
    MidiStore store(2);
    EXPECT_TRUE(store.Add(5, midi::NoteOn(1, 60, 1)));
    EXPECT_TRUE(store.Add(6, midi::NoteOff(1, 60, 0)));
    EXPECT_FALSE(store.Add(7, midi::NoteOn(1, 62, 1)));
    EXPECT_EQ(store.CountEvents(), 2u);
    EXPECT_EQ(store.Dropped(), 1u);
    store.EnsureRoom(3);
    EXPECT_GE(store.Capacity(), 5u);
    EXPECT_TRUE(store.Add(7, midi::NoteOn(1, 62, 1)));
    ASSERT_EQ(store.CountEvents(), 3u);
    EXPECT_EQ(store.EventAt(0).stampMs, 5u);
    EXPECT_EQ(store.EventAt(1).message, midi::NoteOff(1, 60, 0));
    EXPECT_EQ(store.EventAt(2).message, midi::NoteOn(1, 62, 1));
}

TEST(MidiStore, ClosingSoundingNotesEndsOnlyTheNotesStillOn) {
    MidiStore store(16);
    store.Add(0, midi::NoteOn(1, 60, 100));
    store.Add(10, midi::NoteOff(1, 60, 0));
    store.Add(20, midi::NoteOn(1, 62, 100));
    store.Add(30, midi::NoteOn(2, 64, 100));
    store.Add(40, midi::NoteOn(2, 64, 0)); // note-on with velocity 0 ends the note
    store.CloseSoundingNotes(99);
    ASSERT_EQ(store.CountEvents(), 6u);
    EXPECT_EQ(store.EventAt(5).stampMs, 99u);
    EXPECT_EQ(store.EventAt(5).message, midi::NoteOff(1, 62, 0));
}

// The point is that no write reaches a deleted store, which the sanitizer builds would report.
TEST(RecordingSlot, ReplacingTheStoreWhileTheNodeRecordsNeverLosesAWrite) {
    RecordingSlot slot;
    slot.Replace(std::make_unique<MidiStore>(1 << 16));
    slot.SetRecording(true);
    std::atomic<bool> stop{false};
    std::atomic<uint32_t> writes{0};
    std::thread node([&] {
        for (uint32_t i = 0; !stop.load(); ++i, writes.fetch_add(1)) {
            slot.Record(i, midi::NoteOn(1, 60, 1));
        }
    });
    while (writes.load() == 0) {
        std::this_thread::yield(); // replace only while the writer is really running
    }
    size_t recorded = 0;
    for (int round = 0; round < 200; ++round) {
        recorded += slot.Kept()->CountEvents();
        slot.Replace(std::make_unique<MidiStore>(1 << 16));
    }
    stop.store(true);
    node.join();
    EXPECT_LE(recorded, writes.load());
}
