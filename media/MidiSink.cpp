#include "MidiSink.h"

namespace vocato::media {

void MidiSink::AllNotesOff(bool justChannel, uint32_t stampMs) noexcept {
    for (int channel = 1; channel <= 16; ++channel) {
        Send(midi::ControlChange(channel, midi::kAllNotesOff, 0), stampMs);
        if (justChannel) {
            continue;
        }
        for (int key = 0; key < 128; ++key) {
            Send(midi::NoteOff(channel, static_cast<uint8_t>(key), 0), stampMs);
        }
    }
}

} // namespace vocato::media
