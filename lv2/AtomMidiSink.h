// The node's MIDI written into the host's atom sequence during run(), each event at the
// frame offset the plugin sets before it hands the node the samples that led to it.
#pragma once

#include "MidiSink.h"

#include <lv2/atom/forge.h>
#include <lv2/urid/urid.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>

namespace vocato::lv2 {

class AtomMidiSink final : public media::MidiSink {
public:
    // Instantiation thread: maps the URIs it writes.
    explicit AtomMidiSink(LV2_URID_Map* map);

    // Audio thread. Starts a run: `sequence` is the output port's buffer, whose atom size
    // the host set to its capacity; null when the port is not connected (events are dropped).
    // Events sent between runs go first, at frame 0.
    void Begin(LV2_Atom_Sequence* sequence) noexcept;
    // Audio thread. The frame offset in this run of the events sent from now on.
    void SetFrame(uint32_t frame) noexcept { frame_ = frame; }
    // Audio thread. Closes the sequence.
    void End() noexcept;

    // Audio thread (or between runs). A note-off for a key this sink never saw sounding is
    // left out: the node's "all notes off" to receivers that ignore controller 123 would
    // otherwise be 2048 note-offs, more than a host's MIDI buffer takes.
    void Send(const media::MidiMessage& message, uint32_t stampMs) noexcept override;

    // Any thread that does not race the audio thread. Events that found no room.
    uint64_t Dropped() const noexcept { return dropped_; }

private:
    bool Sounding(const media::MidiMessage& message) const noexcept;
    void Track(const media::MidiMessage& message) noexcept;
    void Write(const media::MidiMessage& message) noexcept;

    static constexpr size_t kPendingCapacity = 64;

    LV2_Atom_Forge forge_{};
    LV2_Atom_Forge_Frame sequenceFrame_{};
    LV2_URID midiEvent_;
    enum class State { BetweenRuns, Writing, NoOutput };
    State state_ = State::BetweenRuns;
    uint32_t frame_ = 0;
    std::array<media::MidiMessage, kPendingCapacity> pending_{};
    size_t pendingCount_ = 0;
    std::bitset<16 * 128> sounding_;
    uint64_t dropped_ = 0;
};

} // namespace vocato::lv2
