// Where the node's MIDI goes: the internal synthesizer now, the JACK and ALSA ports later.
#pragma once

#include "MidiMessage.h"

#include <cstdint>

namespace vocato::media {

class MidiSink {
public:
    virtual ~MidiSink() = default;

    // Audio thread; never allocates, locks or blocks. `stampMs` is the sender's time stamp
    // in milliseconds; a sink plays a message whose stamp is not in the future at once.
    virtual void Send(const MidiMessage& message, uint32_t stampMs) noexcept = 0;

    // Audio thread. Controller 123 (all notes off) on every channel; unless `justChannel`,
    // also a note-off for every key of every channel, for receivers that ignore controller 123.
    void AllNotesOff(bool justChannel, uint32_t stampMs) noexcept;
};

} // namespace vocato::media
