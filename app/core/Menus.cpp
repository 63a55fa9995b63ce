#include "Menus.h"

#include "Diagnostics.h"
#include "InstrumentTables.h"
#include "MenuItem.h"
#include "Preferences.h"

#include <QMenu>
#include <cstring>
#include <string>

namespace vocato {

Message MidiPortMessage(const char* name) {
    Message message(kMidiPortChosen);
    message.AddString("Port", name);
    return message;
}

Message ChannelMessage(int8_t channel) {
    Message message(kChannelChosen);
    message.AddInt8("Channel", channel);
    return message;
}

Message PresetMessage(int8_t preset, const char* name) {
    Message message(kPresetChosen);
    message.AddInt8("Preset", preset);
    message.AddString("Name", name);
    return message;
}

Message InstrumentMessage(int8_t program, const char* name) {
    Message message(kInstrumentChosen);
    message.AddInt8("Instrument", program);
    message.AddString("Name", name);
    return message;
}

void AddMidiPort(QMenu* menu, const char* key) {
    std::string current;
    bool hasCurrent =
        key != nullptr && prefs != nullptr && prefs->FindString(key, &current) == B_OK;
    for (const MidiConsumer& consumer : MidiConsumers()) {
        auto* item = new MenuItem(QString::fromStdString(consumer.name),
                                  MidiPortMessage(consumer.name.c_str()), menu);
        if (hasCurrent && consumer.name == current) {
            item->SetMarked(true);
        }
        menu->addAction(item);
    }
}

void AddMidiChannel(QMenu* menu, const char* key) {
    int8_t current = 0;
    if (key != nullptr && prefs != nullptr && prefs->FindInt8(key, &current) != B_OK) {
        current = 0;
    }
    media::Diagnostic("Set channel %d\n", current);
    for (int8_t channel = 1; channel <= 16; ++channel) {
        auto* item = new MenuItem(QString::number(channel), ChannelMessage(channel), menu);
        if (channel == current) {
            item->SetMarked(true);
        }
        menu->addAction(item);
    }
}

void AddPreset(QMenu* menu) {
    for (size_t i = 0; i < kPresetLabels.size(); ++i) {
        const char* label = kPresetLabels[i];
        menu->addAction(new MenuItem(label, PresetMessage(int8_t(i + 1), label), menu));
    }
}

void AddGMInstruments(QMenu* menu, Handler* target) {
    int8_t program = 0;
    for (const GMFamily& family : kGMFamilies) {
        auto* submenu = new QMenu(family.label, menu);
        for (const char* instrument : family.instruments) {
            submenu->addAction(
                new MenuItem(instrument, InstrumentMessage(program++, instrument), submenu));
        }
        SetTargetForItems(submenu, target);
        menu->addMenu(submenu);
    }
}

std::optional<MidiConsumer> FindConsumer(const char* name) {
    for (MidiConsumer& consumer : MidiConsumers()) {
        if (consumer.name == name) {
            return std::move(consumer);
        }
    }
    return std::nullopt;
}

} // namespace vocato
