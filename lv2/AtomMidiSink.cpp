#include "AtomMidiSink.h"

#include <lv2/midi/midi.h>

namespace vocato::lv2 {
namespace {

size_t KeyIndex(const media::MidiMessage& message) noexcept {
    return static_cast<size_t>(message.bytes[0] & 0x0F) * 128 + (message.bytes[1] & 0x7F);
}

bool IsNoteOn(const media::MidiMessage& m) noexcept {
    return m.Status() == media::midi::kNoteOn && m.bytes[2] != 0;
}

bool IsNoteOff(const media::MidiMessage& m) noexcept {
    return m.Status() == media::midi::kNoteOff ||
           (m.Status() == media::midi::kNoteOn && m.bytes[2] == 0);
}

} // namespace

AtomMidiSink::AtomMidiSink(LV2_URID_Map* map)
    : midiEvent_(map->map(map->handle, LV2_MIDI__MidiEvent)) {
    lv2_atom_forge_init(&forge_, map);
}

void AtomMidiSink::Begin(LV2_Atom_Sequence* sequence) noexcept {
    frame_ = 0;
    state_ = State::NoOutput;
    if (sequence != nullptr) {
        lv2_atom_forge_set_buffer(&forge_, reinterpret_cast<uint8_t*>(sequence),
                                  sequence->atom.size);
        if (lv2_atom_forge_sequence_head(&forge_, &sequenceFrame_, 0) != 0) {
            state_ = State::Writing;
        }
    }
    for (size_t i = 0; i < pendingCount_; ++i) {
        Write(pending_[i]);
    }
    pendingCount_ = 0;
}

void AtomMidiSink::End() noexcept {
    if (state_ == State::Writing) {
        lv2_atom_forge_pop(&forge_, &sequenceFrame_);
    }
    state_ = State::BetweenRuns;
}

void AtomMidiSink::Send(const media::MidiMessage& message, uint32_t) noexcept {
    if (IsNoteOff(message) && !Sounding(message)) {
        return;
    }
    Track(message);
    if (state_ != State::BetweenRuns) {
        Write(message);
    } else if (pendingCount_ < pending_.size()) {
        pending_[pendingCount_++] = message;
    } else {
        ++dropped_;
    }
}

bool AtomMidiSink::Sounding(const media::MidiMessage& message) const noexcept {
    return sounding_.test(KeyIndex(message));
}

void AtomMidiSink::Track(const media::MidiMessage& message) noexcept {
    if (IsNoteOn(message)) {
        sounding_.set(KeyIndex(message));
    } else if (IsNoteOff(message)) {
        sounding_.reset(KeyIndex(message));
    }
}

void AtomMidiSink::Write(const media::MidiMessage& message) noexcept {
    // Room is checked for the whole event first: the forge would otherwise leave a time
    // stamp without its event when the buffer fills in between.
    const size_t needed = sizeof(LV2_Atom_Event) + lv2_atom_pad_size(message.size);
    if (state_ != State::Writing || forge_.size - forge_.offset < needed) {
        ++dropped_;
        return;
    }
    lv2_atom_forge_frame_time(&forge_, frame_);
    lv2_atom_forge_atom(&forge_, message.size, midiEvent_);
    lv2_atom_forge_write(&forge_, message.bytes, message.size);
}

} // namespace vocato::lv2
