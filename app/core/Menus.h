#pragma once

#include "Handler.h"
#include "Message.h"
#include "MidiConsumers.h"

#include <cstdint>
#include <optional>

class QMenu;

namespace vocato {

// The messages menu items send.
inline constexpr uint32_t kMidiPortChosen = FourCC("sTmp");   // string "Port"
inline constexpr uint32_t kChannelChosen = FourCC("sTmc");    // int8 "Channel", 1 ... 16
inline constexpr uint32_t kPresetChosen = FourCC("Pset");     // int8 "Preset", string "Name"
inline constexpr uint32_t kInstrumentChosen = FourCC("StIn"); // int8 "Instrument", string "Name"

Message MidiPortMessage(const char* name);
Message ChannelMessage(int8_t channel);
Message PresetMessage(int8_t preset, const char* name);
Message InstrumentMessage(int8_t program, const char* name);

// The menu builders run on the GUI thread. A `key` names the settings entry
// whose value marks the current choice; null marks nothing.

// One item per MIDI input on the system (JACK and ALSA).
void AddMidiPort(QMenu* menu, const char* key);
// "1" ... "16".
void AddMidiChannel(QMenu* menu, const char* key);
// The twenty input presets; nothing marked, no target.
void AddPreset(QMenu* menu);
// Sixteen family submenus of eight instruments, each item aimed at `target`.
void AddGMInstruments(QMenu* menu, Handler* target);

// The first MIDI input with exactly this name.
std::optional<MidiConsumer> FindConsumer(const char* name);

// Offers every MIDI input as a choice of a discrete parameter: anything with
// AddItem(int32_t id, const char* name).
template <class DiscreteParameter> void FindListConsumer(DiscreteParameter* parameter) {
    for (const MidiConsumer& consumer : MidiConsumers()) {
        parameter->AddItem(consumer.id, consumer.name.c_str());
    }
}

} // namespace vocato
