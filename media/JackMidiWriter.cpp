#include "JackMidiWriter.h"

#include <jack/midiport.h>

#include <algorithm>

namespace vocato::media {

bool JackMidiWriter::Write(uint32_t frame, const MidiMessage& message) noexcept {
    if (buffer_ == nullptr || frames_ == 0 || message.size == 0) {
        return false;
    }
    frame = std::max(std::min(frame, frames_ - 1), last_);
    // Asking first keeps libjack from printing its own complaint on the audio thread.
    if (jack_midi_max_event_size(buffer_) < message.size ||
        jack_midi_event_write(buffer_, frame, message.bytes, message.size) != 0) {
        ++dropped_;
        return false;
    }
    last_ = frame;
    return true;
}

} // namespace vocato::media
