// Writes MIDI messages into one period of a JACK MIDI port. JACK wants events in time order
// and inside the period: a late or out-of-order frame is moved to the latest frame written,
// and a message that no longer fits is dropped and counted.
#pragma once

#include "MidiMessage.h"

#include <cstdint>

namespace vocato::media {

class JackMidiWriter {
public:
    // JACK process thread. `portBuffer` is the MIDI port's buffer for this period, cleared.
    JackMidiWriter(void* portBuffer, uint32_t frames) noexcept
        : buffer_(portBuffer), frames_(frames) {}

    // JACK process thread. False when the port's buffer is full.
    bool Write(uint32_t frame, const MidiMessage& message) noexcept;

    uint32_t Dropped() const noexcept { return dropped_; }

private:
    void* buffer_;
    uint32_t frames_;
    uint32_t last_ = 0;
    uint32_t dropped_ = 0;
};

} // namespace vocato::media
