#include "Menus.h"
#include "InstrumentTables.h"
#include "JackDummyServer.h"
#include "MenuItem.h"
#include "Preferences.h"

#include <gtest/gtest.h>
#include <jack/jack.h>

#include <QMenu>
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>

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

// A settings store in a folder of its own, installed as `prefs` for one test.
class ScopedPrefs {
public:
    ScopedPrefs() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "vocato-menus-XXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
        ::setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
        store_ = std::make_unique<TPreferences>("Vocato");
        prefs = store_.get();
    }
    ~ScopedPrefs() {
        prefs = nullptr;
        store_.reset();
        std::filesystem::remove_all(folder_);
    }
    TPreferences& operator*() { return *store_; }

private:
    std::string folder_;
    std::unique_ptr<TPreferences> store_;
};

// A JACK client with one MIDI input port, as a synthesizer would have.
class MidiInputClient {
public:
    explicit MidiInputClient(const char* name) {
        client_ = jack_client_open(name, JackOptions(JackNoStartServer), nullptr);
        if (client_ != nullptr) {
            jack_port_register(client_, "midi_in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
            jack_port_register(client_, "midi_out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
            jack_activate(client_);
        }
    }
    ~MidiInputClient() {
        if (client_ != nullptr) {
            jack_client_close(client_);
        }
    }
    bool IsOpen() const { return client_ != nullptr; }

private:
    jack_client_t* client_ = nullptr;
};

} // namespace

TEST(ItemMessages, CarryTheirFieldsInTheListedOrder) {
    Message port = MidiPortMessage("synth:midi_in");
    EXPECT_EQ(port.what, FourCC("sTmp"));
    EXPECT_EQ(StringField(port, "Port"), "synth:midi_in");

    Message channel = ChannelMessage(16);
    EXPECT_EQ(channel.what, FourCC("sTmc"));
    EXPECT_EQ(Int8Field(channel, "Channel"), 16);

    Message preset = PresetMessage(4, "Guitars");
    EXPECT_EQ(preset.what, FourCC("Pset"));
    ASSERT_EQ(preset.CountNames(), 2);
    EXPECT_EQ(preset.Fields()[0].name, "Preset");
    EXPECT_EQ(preset.Fields()[1].name, "Name");

    Message instrument = InstrumentMessage(127, "GUNSHOT");
    EXPECT_EQ(instrument.what, FourCC("StIn"));
    EXPECT_EQ(instrument.Fields()[0].name, "Instrument");
    EXPECT_EQ(Int8Field(instrument, "Instrument"), 127);
    EXPECT_EQ(StringField(instrument, "Name"), "GUNSHOT");
}

TEST(PresetMenu, ListsTheTwentyPresetsUnmarkedEndingWithAltoRecorder) {
    QMenu menu;
    AddPreset(&menu);
    auto items = Items(&menu);
    ASSERT_EQ(items.size(), 20u);
    EXPECT_EQ(items[0]->text(), "Default");
    EXPECT_EQ(Int8Field(items[0]->ItemMessage(), "Preset"), 1);
    EXPECT_EQ(items[19]->text(), "Alto recorder");
    EXPECT_EQ(Int8Field(items[19]->ItemMessage(), "Preset"), 20);
    EXPECT_EQ(StringField(items[19]->ItemMessage(), "Name"), "Alto recorder");
    for (MenuItem* item : items) {
        EXPECT_FALSE(item->IsMarked());
        EXPECT_EQ(item->Target(), nullptr);
    }
    EXPECT_STREQ(kPresetLabels[3], kGMFamilies[3].label) << "the Guitars labels differ";
}

TEST(InstrumentMenu, HasSixteenFamiliesOfEightConsecutivePrograms) {
    QMenu menu;
    Recorder window;
    AddGMInstruments(&menu, &window);
    ASSERT_EQ(menu.actions().size(), 16);
    int expectedProgram = 0;
    std::map<std::string, int> programs;
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
            programs[item->text().toStdString()] = Int8Field(item->ItemMessage(), "Instrument");
        }
    }
    EXPECT_EQ(programs["ACOUSTIC GRAND"], 0);
    EXPECT_EQ(programs["HONKY TONK"], 3);
    EXPECT_EQ(programs["TIMPANI"], 47);
    EXPECT_EQ(programs["B_CHIFF"], 83);
    EXPECT_EQ(programs["GUNSHOT"], 127);
    EXPECT_EQ(menu.actions()[2]->menu()->title(), "Orgues");
    EXPECT_EQ(menu.actions()[15]->menu()->title(), " Sound Effects");
}

TEST(InstrumentMenu, ChoosingAnItemHandsItsMessageToTheTarget) {
    QMenu menu;
    Recorder window;
    AddGMInstruments(&menu, &window);
    Items(menu.actions()[5]->menu())[7]->trigger();
    ASSERT_EQ(window.received.size(), 1u);
    EXPECT_EQ(window.received[0].what, FourCC("StIn"));
    EXPECT_EQ(Int8Field(window.received[0], "Instrument"), 47);
    EXPECT_EQ(StringField(window.received[0], "Name"), "TIMPANI");
}

TEST(ChannelMenu, NumbersOneToSixteenAndMarksTheStoredChannel) {
    ScopedPrefs store;
    (*store).SetInt8("MidiChannel", 5);
    QMenu menu;
    AddMidiChannel(&menu, "MidiChannel");
    auto items = Items(&menu);
    ASSERT_EQ(items.size(), 16u);
    EXPECT_EQ(items[2]->text(), "3");
    EXPECT_EQ(Int8Field(items[2]->ItemMessage(), "Channel"), 3);
    for (size_t i = 0; i < items.size(); ++i) {
        EXPECT_EQ(items[i]->IsMarked(), i == 4) << "item " << i;
    }
    Recorder window;
    SetTargetForItems(&menu, &window);
    items[15]->trigger();
    ASSERT_EQ(window.received.size(), 1u);
    EXPECT_EQ(Int8Field(window.received[0], "Channel"), 16);
}

TEST(ChannelMenu, MarksNothingForAChannelOutsideTheRangeOrWithoutKey) {
    ScopedPrefs store;
    (*store).SetInt8("MidiChannel", 17);
    for (const char* key : {"MidiChannel", static_cast<const char*>(nullptr)}) {
        QMenu menu;
        AddMidiChannel(&menu, key);
        for (MenuItem* item : Items(&menu)) {
            EXPECT_FALSE(item->IsMarked()) << item->text().toStdString();
        }
    }
}

TEST(MidiPorts, WithoutAnyMidiSystemTheMenusAreEmptyAndNothingIsFound) {
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
    JackDummyServer server;
    ASSERT_TRUE(server.IsRunning()) << "jackd with the dummy backend did not start";
    MidiInputClient synth("vocato-test-synth");
    ASSERT_TRUE(synth.IsOpen());
    ScopedPrefs store;
    (*store).SetString("MidiPortName", "vocato-test-synth:midi_in");

    QMenu menu;
    AddMidiPort(&menu, "MidiPortName");
    auto items = Items(&menu);
    auto port = std::find_if(items.begin(), items.end(), [](MenuItem* item) {
        return item->text() == "vocato-test-synth:midi_in";
    });
    ASSERT_NE(port, items.end());
    EXPECT_TRUE((*port)->IsMarked());
    EXPECT_EQ(StringField((*port)->ItemMessage(), "Port"), "vocato-test-synth:midi_in");
    for (MenuItem* item : items) {
        EXPECT_NE(item->text(), "vocato-test-synth:midi_out") << "outputs are not destinations";
        EXPECT_EQ(item->IsMarked(), item == *port);
    }

    std::optional<MidiConsumer> found = FindConsumer("vocato-test-synth:midi_in");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->name, "vocato-test-synth:midi_in");
    EXPECT_FALSE(FindConsumer("vocato-test-synth").has_value());

    struct Choices {
        void AddItem(int32_t id, const char* name) { items.emplace_back(id, name); }
        std::vector<std::pair<int32_t, std::string>> items;
    } choices;
    FindListConsumer(&choices);
    ASSERT_EQ(choices.items.size(), items.size());
    EXPECT_EQ(choices.items[0].first, 1);
    EXPECT_TRUE(std::any_of(choices.items.begin(), choices.items.end(), [&](const auto& choice) {
        return choice.first == found->id && choice.second == found->name;
    }));
}

TEST(MidiPorts, AStoredPortThatIsGoneMarksNothing) {
    JackDummyServer server;
    ASSERT_TRUE(server.IsRunning());
    MidiInputClient synth("vocato-test-synth");
    ScopedPrefs store;
    (*store).SetString("MidiPortName", "unplugged:midi_in");
    QMenu menu;
    AddMidiPort(&menu, "MidiPortName");
    EXPECT_FALSE(menu.actions().isEmpty());
    for (MenuItem* item : Items(&menu)) {
        EXPECT_FALSE(item->IsMarked());
    }
}
