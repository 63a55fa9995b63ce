#include "NotePrinter.h"

namespace vocato::app {
namespace {

const char* const kNames[12] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};

} // namespace

void NotePrinter::Send(const media::MidiMessage& message, uint32_t stampMs) noexcept {
    const uint8_t status = message.Status();
    if (status == media::midi::kControlChange && message.bytes[1] == media::midi::kAllNotesOff) {
        const int channel = (message.bytes[0] & 0x0F) + 1;
        for (int key = 0; key < 128; ++key) {
            Send(media::midi::NoteOff(channel, static_cast<uint8_t>(key), 0), stampMs);
        }
        return;
    }
    if (status != media::midi::kNoteOn && status != media::midi::kNoteOff) {
        return;
    }
    const bool on = status == media::midi::kNoteOn && message.bytes[2] != 0;
    bool& sounding = on_[message.bytes[0] & 0x0F][message.bytes[1]];
    if (on || sounding) {
        sounding = on;
        queue_.TryPush({message, stampMs});
    }
}

void NotePrinter::Print(std::FILE* out) {
    Played played;
    while (queue_.TryPop(played)) {
        const media::MidiMessage& m = played.message;
        const int key = m.bytes[1];
        const bool on = m.Status() == media::midi::kNoteOn && m.bytes[2] != 0;
        std::fprintf(out, "%s %s%d (%d)", on ? "note on " : "note off", kNames[key % 12],
                     key / 12 - 1, key);
        if (on) {
            std::fprintf(out, " velocity %d", m.bytes[2]);
        }
        std::fprintf(out, "\n");
    }
    std::fflush(out);
}

} // namespace vocato::app
