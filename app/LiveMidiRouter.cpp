#include "LiveMidiRouter.h"

#include "VocatoNode.h"

#include <bit>

namespace vocato::app {

namespace midi = media::midi;

constexpr uint8_t kResetAllControllers = 121;

void LiveMidiRouter::Send(const media::MidiMessage& message, uint32_t) noexcept {
    const int channel = (message.bytes[0] & 0x0F) + 1;
    const int key = message.bytes[1];
    if (message.Status() == midi::kNoteOn && message.bytes[2] != 0) {
        Mark(channel, key, true);
    } else if (message.Status() == midi::kNoteOff || message.Status() == midi::kNoteOn) {
        // The node's all-notes-off sends a note-off for every key; only those that end a
        // sounding note are worth a place in the ports' small buffers.
        if (!Mark(channel, key, false)) {
            return;
        }
    }
    Forward(message, framed_.load(std::memory_order_relaxed) ? node_.DecisionFrame() : 0);
}

void LiveMidiRouter::Forward(const media::MidiMessage& message, uint32_t frame) noexcept {
    if (drained_.load(std::memory_order_acquire) && !queue_.TryPush({frame, message})) {
        dropped_.fetch_add(1, std::memory_order_relaxed);
    }
    if (media::MidiSink* sequencer = sequencer_.load(std::memory_order_acquire)) {
        sequencer->Send(message, 0);
    }
}

bool LiveMidiRouter::Mark(int channel, int key, bool on) noexcept {
    std::atomic<uint64_t>& word = sounding_[channel - 1][key / 64];
    const uint64_t bit = uint64_t{1} << (key % 64);
    const uint64_t before = on ? word.fetch_or(bit, std::memory_order_relaxed)
                               : word.fetch_and(~bit, std::memory_order_relaxed);
    return (before & bit) != 0;
}

void LiveMidiRouter::Silence() noexcept {
    for (int channel = 1; channel <= 16; ++channel) {
        for (int half = 0; half < 2; ++half) {
            uint64_t keys = sounding_[channel - 1][half].exchange(0, std::memory_order_relaxed);
            while (keys != 0) {
                const int key = half * 64 + std::countr_zero(keys);
                keys &= keys - 1;
                Forward(midi::NoteOff(channel, static_cast<uint8_t>(key), 0), 0);
            }
        }
    }
    for (int channel = 1; channel <= 16; ++channel) {
        Forward(midi::ControlChange(channel, midi::kAllNotesOff, 0), 0);
        Forward(midi::ControlChange(channel, kResetAllControllers, 0), 0);
    }
}

void LiveMidiRouter::DiscardQueued() noexcept {
    QueuedMidi ignored;
    while (queue_.TryPop(ignored)) {
    }
}

int LiveMidiRouter::SoundingNotes() const noexcept {
    int count = 0;
    for (const auto& channel : sounding_) {
        for (const auto& word : channel) {
            count += std::popcount(word.load(std::memory_order_relaxed));
        }
    }
    return count;
}

} // namespace vocato::app
