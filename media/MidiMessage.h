// One channel message of MIDI 1.0 as it goes on the wire. Channels are numbered 1 ... 16 as
// musicians count them; the status byte carries channel - 1 in its low nibble. Data bytes are
// masked to 7 bits so that a message is always valid on the wire.
#pragma once

#include <cstdint>

namespace vocato::media {

struct MidiMessage {
    uint8_t bytes[3] = {};
    uint8_t size = 0;

    uint8_t Status() const noexcept { return bytes[0] & 0xF0; }
    bool operator==(const MidiMessage&) const = default;
};

namespace midi {

constexpr uint8_t kNoteOff = 0x80;
constexpr uint8_t kNoteOn = 0x90;
constexpr uint8_t kControlChange = 0xB0;
constexpr uint8_t kProgramChange = 0xC0;
constexpr uint8_t kPitchBend = 0xE0;

constexpr uint8_t kExpression = 11;
constexpr uint8_t kAllNotesOff = 123;

constexpr uint8_t StatusFor(uint8_t kind, int channel) noexcept {
    return static_cast<uint8_t>(kind | ((channel - 1) & 0x0F));
}

constexpr MidiMessage NoteOn(int channel, uint8_t note, uint8_t velocity) noexcept {
    return {{StatusFor(kNoteOn, channel), static_cast<uint8_t>(note & 0x7F),
             static_cast<uint8_t>(velocity & 0x7F)},
            3};
}

constexpr MidiMessage NoteOff(int channel, uint8_t note, uint8_t velocity) noexcept {
    return {{StatusFor(kNoteOff, channel), static_cast<uint8_t>(note & 0x7F),
             static_cast<uint8_t>(velocity & 0x7F)},
            3};
}

constexpr MidiMessage ControlChange(int channel, uint8_t controller, uint8_t value) noexcept {
    return {{StatusFor(kControlChange, channel), static_cast<uint8_t>(controller & 0x7F),
             static_cast<uint8_t>(value & 0x7F)},
            3};
}

constexpr MidiMessage ProgramChange(int channel, uint8_t program) noexcept {
    return {{StatusFor(kProgramChange, channel), static_cast<uint8_t>(program & 0x7F), 0}, 2};
}

// lsb and msb are the low and high 7 bits of the 14-bit bend.
constexpr MidiMessage PitchBend(int channel, uint8_t lsb, uint8_t msb) noexcept {
    return {{StatusFor(kPitchBend, channel), static_cast<uint8_t>(lsb & 0x7F),
             static_cast<uint8_t>(msb & 0x7F)},
            3};
}

} // namespace midi
} // namespace vocato::media
