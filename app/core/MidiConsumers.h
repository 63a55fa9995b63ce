#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocato {

// A MIDI input somewhere on the system that Vocato could send to.
struct MidiConsumer {
    int32_t id;       // 1, 2, ... in listing order, stable for one listing only
    std::string name; // "system:midi_playback_1" (JACK), "Midi Through:Midi Through Port-0" (ALSA)
};

// One MIDI system's inputs. A system that is not running has none; listing
// never fails.
class MidiInputDirectory {
public:
    virtual ~MidiInputDirectory() = default;
    virtual std::vector<std::string> InputNames() = 0;
};

// JACK MIDI input ports, when a JACK server is running (no server is started).
std::unique_ptr<MidiInputDirectory> MakeJackMidiInputs();
// ALSA sequencer ports that accept subscriptions, when /dev/snd/seq exists.
std::unique_ptr<MidiInputDirectory> MakeAlsaMidiInputs();

// The inputs of every MIDI system, JACK first, numbered from 1. Blocks for as
// long as the servers take to answer; GUI or main thread, never the audio thread.
std::vector<MidiConsumer> MidiConsumers();

} // namespace vocato
