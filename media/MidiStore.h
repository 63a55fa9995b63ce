// A recording of time-stamped MIDI messages. All memory is taken at construction, so the
// audio thread can add to it without allocating; a full store refuses and counts.
#pragma once

#include "MidiMessage.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vocato::media {

struct StoredEvent {
    uint32_t stampMs = 0; // milliseconds from the start of the recording
    MidiMessage message;
};

class MidiStore {
public:
    // Throws std::bad_alloc when the memory is not there.
    explicit MidiStore(size_t capacity);

    // One writer at a time (the node's thread, or the owner before it publishes the store).
    // False when the store is full.
    bool Add(uint32_t stampMs, const MidiMessage& message) noexcept;

    // Any thread: the events added so far are complete.
    size_t CountEvents() const noexcept { return count_.load(std::memory_order_acquire); }
    const StoredEvent& EventAt(size_t index) const noexcept { return events_[index]; }
    size_t Capacity() const noexcept { return capacity_; }
    uint64_t Dropped() const noexcept { return dropped_.load(std::memory_order_relaxed); }

    // Not the audio thread. The events ordered by stamp; equal stamps keep their order.
    std::vector<StoredEvent> SortedEvents() const;

    // Writer only, and only while no other thread adds (the converting thread between two
    // buffers): makes room for `room` more events, moving the events to a larger array.
    // Throws std::bad_alloc.
    void EnsureRoom(size_t room);

    // Writer only. Adds, at `stampMs`, a note-off for every key whose note-ons outnumber its
    // note-offs, so that a recording cut in the middle of a note still ends it.
    void CloseSoundingNotes(uint32_t stampMs) noexcept;

private:
    std::unique_ptr<StoredEvent[]> events_;
    size_t capacity_;
    std::atomic<size_t> count_{0};
    std::atomic<uint64_t> dropped_{0};
};

} // namespace vocato::media
