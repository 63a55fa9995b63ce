#include "Menus.h"
#include "InstrumentTables.h"
#include "JackServer.h"
#include "MenuItem.h"
#include "Preferences.h"

#include <gtest/gtest.h>

#include <QMenu>
#include <algorithm>
#include <jack/jack.h>
#include <map>

using namespace vocato;

namespace {

class Recorder : public Handler {
public:
    void MessageReceived(const Message& message) override { received.push_back(message); }
    std::vector<Message> received;
};

std::vector<MenuItem*> Items(QMenu* menu) {
    std::vector<MenuItem*> items;
    for (QAction* action : menu->actions()) {
        if (auto* item = dynamic_cast<MenuItem*>(action)) {
            items.push_back(item);
        }
    }
    return items;
}

int8_t Int8Field(const Message& message, const char* name) {
    int8_t value = -1;
    EXPECT_EQ(message.FindInt8(name, &value), B_OK) << name;
    return value;
}

std::string StringField(const Message& message, const char* name) {
    std::string value;
    EXPECT_EQ(message.FindString(name, &value), B_OK) << name;
    return value;
}

// Installs the run's settings store as `prefs` for one test.
class ScopedPrefs {
public:
    ScopedPrefs() { prefs = &store_; }
    ~ScopedPrefs() { prefs = nullptr; }
    TPreferences* operator->() { return &store_; }

private:
    TPreferences store_{"Vocato"};
};

} // namespace

TEST(PresetMenu, ListsTheTwentyPresetsUnmarkedEachCarryingItsNumberAndName) {
    QMenu menu;
    AddPreset(&menu);
    auto items = Items(&menu);
    ASSERT_EQ(items.size(), 20u);
    for (size_t i = 0; i < items.size(); ++i) {
        EXPECT_FALSE(items[i]->IsMarked());
        EXPECT_EQ(Int8Field(items[i]->ItemMessage(), "Preset"), int(i) + 1);
        EXPECT_EQ(StringField(items[i]->ItemMessage(), "Name"), items[i]->text().toStdString());
    }
}

TEST(InstrumentMenu, HasSixteenFamiliesOfEightConsecutiveProgramsThatReachTheTarget) {
    QMenu menu;
    Recorder window;
    AddGMInstruments(&menu, &window);
    ASSERT_EQ(menu.actions().size(), 16);
    int expectedProgram = 0;
    for (int family = 0; family < 16; ++family) {
        QMenu* submenu = menu.actions()[family]->menu();
        ASSERT_NE(submenu, nullptr);
        EXPECT_EQ(submenu->title(), kGMFamilies[size_t(family)].label);
        auto items = Items(submenu);
        ASSERT_EQ(items.size(), 8u);
        for (MenuItem* item : items) {
            EXPECT_EQ(item->Target(), &window);
            EXPECT_FALSE(item->IsMarked());
            EXPECT_EQ(StringField(item->ItemMessage(), "Name"), item->text().toStdString());
            EXPECT_EQ(Int8Field(item->ItemMessage(), "Instrument"), expectedProgram++);
        }
    }
    Items(menu.actions()[5]->menu())[7]->trigger();
    ASSERT_EQ(window.received.size(), 1u);
    EXPECT_EQ(Int8Field(window.received[0], "Instrument"), 47);
}

TEST(ChannelMenu, NumbersOneToSixteenAndMarksOnlyAStoredChannelInRange) {
    ScopedPrefs store;
    for (int8_t stored : {5, 17}) {
        store->SetInt8("MidiChannel", stored);
        for (const char* key : {"MidiChannel", static_cast<const char*>(nullptr)}) {
            QMenu menu;
            AddMidiChannel(&menu, key);
            auto items = Items(&menu);
            ASSERT_EQ(items.size(), 16u);
            for (size_t i = 0; i < items.size(); ++i) {
                EXPECT_EQ(items[i]->text().toInt(), int(i) + 1);
                EXPECT_EQ(items[i]->IsMarked(), key != nullptr && int(i) + 1 == stored);
            }
        }
    }
    QMenu menu;
    AddMidiChannel(&menu, "MidiChannel");
    EXPECT_EQ(Items(&menu)[15]->ItemMessage().what, FourCC("sTmc"));
    EXPECT_EQ(Int8Field(Items(&menu)[15]->ItemMessage(), "Channel"), 16);
}

TEST(MidiPorts, WithoutAJackServerJackContributesNothing) {
    ::setenv("JACK_DEFAULT_SERVER", "vocato-no-such-server", 1);
    QMenu menu;
    AddMidiPort(&menu, "MidiPortName");
    // This machine may have ALSA ports; JACK must contribute none.
    EXPECT_EQ(size_t(menu.actions().size()), MakeAlsaMidiInputs()->InputNames().size());
    EXPECT_TRUE(MakeJackMidiInputs()->InputNames().empty());
    EXPECT_FALSE(FindConsumer("system:midi_playback_1").has_value());
    ::unsetenv("JACK_DEFAULT_SERVER");
}

TEST(MidiPorts, JackMidiInputsAreListedMarkedFoundAndOffered) {
    vocato::test::JackServer server;
    ASSERT_TRUE(server.Ready()) << "jackd with the dummy backend did not start";
    jack_client_t* synth = jack_client_open("vocato-test-synth", JackNoStartServer, nullptr);
    ASSERT_NE(synth, nullptr);
    jack_port_register(synth, "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_port_register(synth, "midi_out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    jack_activate(synth);
    ScopedPrefs store;
    size_t menuSize = 0;
    for (const char* stored : {"vocato-test-synth:midi_in", "unplugged:midi_in"}) {
        SCOPED_TRACE(stored);
        store->SetString("MidiPortName", stored);
        QMenu menu;
        AddMidiPort(&menu, "MidiPortName");
        auto items = Items(&menu);
        menuSize = items.size();
        auto port = std::find_if(items.begin(), items.end(), [](MenuItem* item) {
            return item->text() == "vocato-test-synth:midi_in";
        });
        ASSERT_NE(port, items.end());
        EXPECT_EQ((*port)->ItemMessage().what, FourCC("sTmp"));
        EXPECT_EQ(StringField((*port)->ItemMessage(), "Port"), "vocato-test-synth:midi_in");
        for (MenuItem* item : items) {
            EXPECT_NE(item->text(), "vocato-test-synth:midi_out") << "outputs are not destinations";
            EXPECT_EQ(item->IsMarked(), item->text() == stored);
        }
    }

    std::optional<MidiConsumer> found = FindConsumer("vocato-test-synth:midi_in");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->name, "vocato-test-synth:midi_in");
    EXPECT_FALSE(FindConsumer("vocato-test-synth").has_value());
    struct Choices {
        void AddItem(int32_t id, const char* name) { items[id] = name; }
        std::map<int32_t, std::string> items;
    } choices;
    FindListConsumer(&choices);
    EXPECT_EQ(choices.items.size(), menuSize);
    EXPECT_EQ(choices.items.begin()->first, 1);
    EXPECT_EQ(choices.items[found->id], found->name);
    jack_client_close(synth);
}
