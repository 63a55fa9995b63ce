#include "MidiStore.h"
#include "RecordingSlot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace midi = vocato::media::midi;
using vocato::media::MidiStore;
using vocato::media::RecordingSlot;

TEST(MidiStore, AFullStoreRefusesAndCounts) {
    MidiStore store(2);
    EXPECT_TRUE(store.Add(0, midi::NoteOn(1, 60, 1)));
    EXPECT_TRUE(store.Add(1, midi::NoteOn(1, 61, 1)));
    EXPECT_FALSE(store.Add(2, midi::NoteOn(1, 62, 1)));
    EXPECT_EQ(store.CountEvents(), 2u);
    EXPECT_EQ(store.Dropped(), 1u);
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

TEST(RecordingSlot, ReplacingTheStoreWhileTheNodeRecordsNeverLosesAWrite) {
    RecordingSlot slot;
    slot.Replace(std::make_unique<MidiStore>(1 << 16));
    slot.SetRecording(true);
    std::atomic<bool> stop{false};
    std::atomic<uint32_t> writes{0};
    std::thread node([&] {
        for (uint32_t i = 0; !stop.load(); ++i) {
            slot.Record(i, midi::NoteOn(1, 60, 1));
            writes.fetch_add(1);
        }
    });
    while (writes.load() == 0) {
        std::this_thread::yield(); // replace only while the writer is really running
    }
    size_t recorded = 0;
    for (int round = 0; round < 200; ++round) {
        MidiStore* before = slot.Kept();
        const size_t n = before->CountEvents();
        slot.Replace(std::make_unique<MidiStore>(1 << 16));
        recorded += n;
    }
    stop.store(true);
    node.join();
    // Sanity only: the point is that no write reached a deleted store (ASan would say so).
    EXPECT_GT(writes.load(), 0u);
    EXPECT_LE(recorded, writes.load());
}

TEST(MidiStore, MakingRoomKeepsEveryEventInOrder) {
    MidiStore store(2);
    store.Add(5, midi::NoteOn(1, 60, 1));
    store.Add(6, midi::NoteOff(1, 60, 0));
    store.EnsureRoom(3);
    EXPECT_GE(store.Capacity(), 5u);
    EXPECT_TRUE(store.Add(7, midi::NoteOn(1, 62, 1)));
    ASSERT_EQ(store.CountEvents(), 3u);
    EXPECT_EQ(store.EventAt(0).stampMs, 5u);
    EXPECT_EQ(store.EventAt(1).message, midi::NoteOff(1, 60, 0));
}
