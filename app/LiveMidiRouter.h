// Where the live node's MIDI goes: to the audio side (the JACK MIDI port and the synthesizer,
// both served by whichever thread renders audio) through a lock-free queue, and to the ALSA
// sequencer port. It also keeps the ledger of sounding notes, so that a stop, a preset
// change or a lost server can end every note that was started.
#pragma once

#include "BoundedQueue.h"
#include "MidiSink.h"

#include <atomic>
#include <cstdint>

namespace vocato {
class VocatoNode;
}

namespace vocato::app {

struct QueuedMidi {
    uint32_t frame; // in the period being rendered, when the node runs on the audio side
    media::MidiMessage message;
};

class LiveMidiRouter final : public media::MidiSink {
public:
    static constexpr size_t kQueueCapacity = 4096;

    // Before the node runs: the node whose decision frames place events in the period.
    explicit LiveMidiRouter(const VocatoNode& node) noexcept : node_(node) {}

    // Node thread. Never allocates, locks or blocks; a full queue drops and counts. A
    // note-off for a key that is not sounding goes nowhere.
    void Send(const media::MidiMessage& message, uint32_t stampMs) noexcept override;

    // Node thread or, when no thread runs the node, the owner. A note-off for every note
    // that is sounding, then All Notes Off and Reset All Controllers on every channel.
    void Silence() noexcept;

    // Audio-side thread. Set while that thread itself runs the node, so that events keep the
    // frame where they were decided; otherwise they go at the start of the next period.
    void SetNodeOnAudioSide(bool on) noexcept { framed_.store(on, std::memory_order_relaxed); }

    // Owner. Whether a thread drains the queue; without one nothing is queued.
    void SetAudioSide(bool present) noexcept { drained_.store(present, std::memory_order_release); }

    // Owner. The sequencer port (or none); set before the node runs or while it is stopped.
    void SetSequencer(media::MidiSink* sequencer) noexcept {
        sequencer_.store(sequencer, std::memory_order_release);
    }

    // Audio-side thread. Takes the next queued event.
    bool Next(QueuedMidi& out) noexcept { return queue_.TryPop(out); }

    // Owner, while no audio-side thread drains: forgets what was queued for a lost server.
    void DiscardQueued() noexcept;

    // Any thread.
    uint64_t Dropped() const noexcept { return dropped_.load(std::memory_order_relaxed); }
    int SoundingNotes() const noexcept;

private:
    void Forward(const media::MidiMessage& message, uint32_t frame) noexcept;
    // Sets or clears the key's bit; true when it was set before.
    bool Mark(int channel, int key, bool on) noexcept;

    const VocatoNode& node_;
    media::BoundedQueue<QueuedMidi, kQueueCapacity> queue_;
    std::atomic<media::MidiSink*> sequencer_{nullptr};
    std::atomic<bool> framed_{false};
    std::atomic<bool> drained_{false};
    std::atomic<uint64_t> dropped_{0};
    // One bit per key and channel.
    std::atomic<uint64_t> sounding_[16][2] = {};
};

} // namespace vocato::app
