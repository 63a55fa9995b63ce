// The window's current MIDI recording as the node sees it. The owner (window or converter)
// replaces and keeps the store; the node only adds to it while recording is on.
//
// Replacing a store waits until the node has finished an add that may have seen the old one,
// so the old store is never deleted under the node's feet; the node itself never waits.
#pragma once

#include "MidiStore.h"

#include <atomic>
#include <memory>

namespace vocato::media {

class RecordingSlot {
public:
    // Owner thread (never the audio thread). Takes the current store out, waits for the node
    // to leave it, deletes it, then publishes `store` (which may be null).
    void Replace(std::unique_ptr<MidiStore> store);

    // Any thread.
    void SetRecording(bool on) noexcept { recording_.store(on, std::memory_order_seq_cst); }
    bool Recording() const noexcept { return recording_.load(std::memory_order_relaxed); }

    // Owner thread: the store being kept, for export; null when there is none.
    MidiStore* Kept() const noexcept { return owned_.get(); }

    // Audio thread. Adds the message when a store exists and recording is on.
    void Record(uint32_t stampMs, const MidiMessage& message) noexcept;

private:
    std::unique_ptr<MidiStore> owned_;
    std::atomic<MidiStore*> store_{nullptr};
    std::atomic<bool> recording_{false};
    std::atomic<bool> writing_{false};
};

} // namespace vocato::media
