#include "Preferences.h"
#include "MessageText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

using namespace vocato;
namespace fs = std::filesystem;

namespace {

// Points XDG_CONFIG_HOME at a fresh folder for each test.
class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "vocato-prefs-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        root_ = pattern;
        const char* old = std::getenv("XDG_CONFIG_HOME");
        oldConfig_ = old == nullptr ? std::optional<std::string>() : std::string(old);
        ::setenv("XDG_CONFIG_HOME", root_.c_str(), 1);
    }
    void TearDown() override {
        if (oldConfig_) {
            ::setenv("XDG_CONFIG_HOME", oldConfig_->c_str(), 1);
        } else {
            ::unsetenv("XDG_CONFIG_HOME");
        }
        fs::remove_all(root_);
    }

    fs::path File() const { return root_ / "Vocato" / "Vocato"; }

    void WriteFile(const std::string& content) const {
        fs::create_directories(File().parent_path());
        std::ofstream(File(), std::ios::binary) << content;
    }

    std::string ReadFile() const {
        std::ifstream in(File(), std::ios::binary);
        std::stringstream content;
        content << in.rdbuf();
        return content.str();
    }

    // What the main window asks for at start-up, with its defaults.
    void ExpectStartUpDefaults(const TPreferences& store) const {
        char port[256];
        int8_t channel = 0;
        int8_t preset = 0;
        char presetName[256];
        int8_t instrument = -1;
        char instrumentName[256];
        EXPECT_STREQ(store.GetString("MidiPortName", "", port, sizeof port), "");
        EXPECT_EQ(store.GetInt8("MidiChannel", 1, &channel), 1);
        EXPECT_EQ(store.GetInt8("Preset", 1, &preset), 1);
        EXPECT_STREQ(store.GetString("PresetName", "Default", presetName, 256), "Default");
        EXPECT_EQ(store.GetInt8("Instrument", 0, &instrument), 0);
        EXPECT_STREQ(store.GetString("instrumentName", "ACOUSTIC GRAND", instrumentName, 256),
                     "ACOUSTIC GRAND");
    }

    fs::path root_;
    std::optional<std::string> oldConfig_;
};

// A flattenable object for the GetFlat/SetFlat pair: a note range.
class NoteRange : public Flattenable {
public:
    NoteRange(uint8_t low = 0, uint8_t high = 0, uint32_t type = FourCC("NRng"))
        : low(low), high(high), type_(type) {}
    uint32_t TypeCode() const override { return type_; }
    std::vector<uint8_t> Flatten() const override { return {low, high}; }
    status_t Unflatten(uint32_t type, std::span<const uint8_t> bytes) override {
        if (type != type_ || bytes.size() != 2) {
            return B_BAD_TYPE;
        }
        low = bytes[0];
        high = bytes[1];
        return B_OK;
    }
    uint8_t low;
    uint8_t high;

private:
    uint32_t type_;
};

} // namespace

TEST_F(PreferencesTest, FirstStartGivesTheDefaultsAndCreatesTheFileAtTheEnd) {
    {
        TPreferences store("Vocato");
        EXPECT_EQ(store.Status(), B_ENTRY_NOT_FOUND);
        EXPECT_EQ(store.Path(), File().string());
        EXPECT_EQ(store.what, FourCC("pref"));
        ExpectStartUpDefaults(store);
        EXPECT_FALSE(fs::exists(File()));
    }
    ASSERT_TRUE(fs::exists(File()));
    TPreferences again("Vocato");
    EXPECT_EQ(again.Status(), B_OK);
    EXPECT_TRUE(again.IsEmpty());
}

TEST_F(PreferencesTest, EveryTypeComesBackFromTheFile) {
    Message nested(FourCC("MRec"));
    nested.AddString("Name", "inner");
    {
        TPreferences store("Vocato");
        store.SetBool("Bool", true);
        store.SetInt8("MidiChannel", 5);
        store.SetInt16("Int16", -300);
        store.SetInt32("InternalSynth", 0);
        store.SetInt64("Int64", int64_t(1) << 40);
        store.SetFloat("midiMin", 48.5f);
        store.SetDouble("Double", 0.1);
        store.SetPoint("Point", {3, 4});
        store.SetRect("Rect", {0, 0, 200, 150});
        store.SetString("MidiPortName", "system:midi_playback_1");
        store.SetMessage("Message", &nested);
        NoteRange range(48, 72);
        store.SetFlat("Range", &range);
    }
    TPreferences store("Vocato");
    ASSERT_EQ(store.Status(), B_OK);
    bool flag = false;
    int8_t i8 = 0;
    int16_t i16 = 0;
    int32_t i32 = -1;
    int64_t i64 = 0;
    float f = 0;
    double d = 0;
    Point point;
    Rect rect;
    Message message;
    char text[256];
    NoteRange range;
    EXPECT_TRUE(store.GetBool("Bool", false, &flag));
    EXPECT_EQ(store.GetInt8("MidiChannel", 1, &i8), 5);
    EXPECT_EQ(store.GetInt16("Int16", 0, &i16), -300);
    EXPECT_EQ(store.GetInt32("InternalSynth", 1, &i32), 0);
    EXPECT_EQ(store.GetInt64("Int64", 0, &i64), int64_t(1) << 40);
    EXPECT_EQ(store.GetFloat("midiMin", 0, &f), 48.5f);
    EXPECT_EQ(store.GetDouble("Double", 0, &d), 0.1);
    EXPECT_EQ(store.GetPoint("Point", {}, &point), (Point{3, 4}));
    EXPECT_EQ(store.GetRect("Rect", {}, &rect), (Rect{0, 0, 200, 150}));
    EXPECT_EQ(store.GetMessage("Message", Message(), &message), nested);
    EXPECT_STREQ(store.GetString("MidiPortName", "", text, sizeof text), "system:midi_playback_1");
    EXPECT_EQ(store.GetFlat("Range", NoteRange(1, 2), &range), B_OK);
    EXPECT_EQ(range.low, 48);
    EXPECT_EQ(range.high, 72);
}

TEST_F(PreferencesTest, ASetterRefusesAKeyOfAnotherTypeAndTheGetterFallsBack) {
    TPreferences store("Vocato");
    ASSERT_EQ(store.SetInt32("Preset", 9), B_OK);
    EXPECT_EQ(store.SetInt8("Preset", 3), B_BAD_TYPE);
    int8_t preset = 0;
    EXPECT_EQ(store.GetInt8("Preset", 1, &preset), 1);
    EXPECT_EQ(preset, 1);
    int32_t stored = 0;
    EXPECT_EQ(store.GetInt32("Preset", 0, &stored), 9);
    NoteRange other(1, 2, FourCC("Othr"));
    NoteRange range(48, 72);
    ASSERT_EQ(store.SetFlat("Range", &other), B_OK);
    EXPECT_EQ(store.SetFlat("Range", &range), B_BAD_TYPE);
}

TEST_F(PreferencesTest, ASetterReplacesTheValueItFinds) {
    TPreferences store("Vocato");
    store.SetFloat("Transpose", 12);
    store.SetFloat("Transpose", -24);
    int32_t count = 0;
    FieldType type{};
    ASSERT_EQ(store.GetInfo("Transpose", &type, &count), B_OK);
    EXPECT_EQ(count, 1);
    float transpose = 0;
    EXPECT_EQ(store.GetFloat("Transpose", 0, &transpose), -24);
}

TEST_F(PreferencesTest, GetStringCutsToTheBufferAndAlwaysTerminates) {
    TPreferences store("Vocato");
    store.SetString("MidiPortName", std::string(300, 'p').c_str());
    char buffer[256];
    std::memset(buffer, 'x', sizeof buffer);
    store.GetString("MidiPortName", "", buffer, sizeof buffer);
    EXPECT_EQ(std::strlen(buffer), 255u);
    EXPECT_EQ(buffer[254], 'p');
    char tiny[1] = {'x'};
    EXPECT_STREQ(store.GetString("MidiPortName", "", tiny, 1), "");
    store.SetInt8("Number", 1);
    EXPECT_STREQ(store.GetString("Number", "fallback", buffer, sizeof buffer), "fallback");
}

TEST_F(PreferencesTest, GetFlatAppliesTheDefaultWhenNothingIsStored) {
    TPreferences store("Vocato");
    NoteRange range(0, 0);
    EXPECT_EQ(store.GetFlat("Range", NoteRange(36, 72), &range), B_OK);
    EXPECT_EQ(range.low, 36);
    EXPECT_EQ(range.high, 72);
}

TEST_F(PreferencesTest, AShorterSaveLoadsExactlyTheLastValues) {
    {
        TPreferences store("Vocato");
        store.SetString("MidiPortName", std::string(200, 'n').c_str());
        store.SetFloat("midiMin", 48);
    }
    auto longSize = fs::file_size(File());
    {
        TPreferences store("Vocato");
        store.RemoveName("MidiPortName");
        store.SetFloat("midiMin", 36);
    }
    EXPECT_LT(fs::file_size(File()), longSize);
    TPreferences store("Vocato");
    ASSERT_EQ(store.Status(), B_OK);
    EXPECT_EQ(store.CountNames(), 1);
    float low = 0;
    EXPECT_EQ(store.GetFloat("midiMin", 0, &low), 36);
}

TEST_F(PreferencesTest, KeysOfEarlierRunsSurviveARunThatAddsOthers) {
    {
        TPreferences store("Vocato");
        store.SetInt8("MidiChannel", 7);
    }
    {
        TPreferences store("Vocato");
        for (const char* key : {"midiMin", "midiMax", "Transpose", "BendRange"}) {
            store.SetFloat(key, 1);
        }
    }
    TPreferences store("Vocato");
    EXPECT_EQ(store.CountNames(), 5);
    int8_t channel = 0;
    EXPECT_EQ(store.GetInt8("MidiChannel", 1, &channel), 7);
}

TEST_F(PreferencesTest, DamagedFilesGiveTheDefaultsAndAreKeptAside) {
    std::string good = MessageToText([] {
        Message m(FourCC("pref"));
        m.AddInt8("MidiChannel", 9);
        m.AddString("PresetName", "Cello");
        return m;
    }());
    const std::string damaged[] = {
        "",
        std::string("\0\0\0\0garbage\xff\xfe", 13),
        good.substr(0, good.size() / 2),   // torn in the middle
        good.substr(0, good.rfind("end")), // every field, but no end
        "what 'pref'\nint8 \"MidiChannel\" 900\nend\n",
        std::string(2 << 20, 'a'), // far too large to be ours
    };
    for (const std::string& content : damaged) {
        WriteFile(content);
        {
            TPreferences store("Vocato");
            EXPECT_EQ(store.Status(), B_BAD_DATA) << content.substr(0, 40);
            EXPECT_TRUE(store.IsEmpty());
            ExpectStartUpDefaults(store);
        }
        std::ifstream kept(File().string() + ".damaged", std::ios::binary);
        std::stringstream keptContent;
        keptContent << kept.rdbuf();
        EXPECT_EQ(keptContent.str(), content) << "the damaged file was not kept aside";
        TPreferences rewritten("Vocato");
        EXPECT_EQ(rewritten.Status(), B_OK);
    }
}

TEST_F(PreferencesTest, AFolderWhereTheFileShouldBeIsUnreadableNotFatal) {
    fs::create_directories(File());
    TPreferences store("Vocato");
    EXPECT_EQ(store.Status(), B_IO_ERROR);
    ExpectStartUpDefaults(store);
    store.SetInt8("MidiChannel", 2);
    EXPECT_EQ(store.Save(), B_IO_ERROR);
}

TEST_F(PreferencesTest, SavingLeavesNoTemporaryFileBehind) {
    {
        TPreferences store("Vocato");
        store.SetInt8("MidiChannel", 4);
        ASSERT_EQ(store.Save(), B_OK);
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(File().parent_path())) {
        files.push_back(entry.path());
    }
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0], File());
    EXPECT_NE(ReadFile().find("int8 \"MidiChannel\" 4\n"), std::string::npos);
}

TEST_F(PreferencesTest, ARelativeConfigHomeFallsBackToTheHomeFolder) {
    const char* home = std::getenv("HOME");
    std::string oldHome = home == nullptr ? "" : home;
    ::setenv("XDG_CONFIG_HOME", "relative/config", 1);
    ::setenv("HOME", root_.c_str(), 1);
    EXPECT_EQ(SettingsDirectory(), (root_ / ".config" / "Vocato").string());
    ::unsetenv("HOME");
    EXPECT_EQ(SettingsDirectory(), "");
    {
        TPreferences store("Vocato");
        EXPECT_EQ(store.Status(), B_ENTRY_NOT_FOUND);
        EXPECT_EQ(store.Save(), B_ENTRY_NOT_FOUND);
    }
    ::setenv("HOME", oldHome.c_str(), 1);
}

TEST_F(PreferencesTest, RandomFileContentsNeverBreakTheStore) {
    std::mt19937 random(3);
    std::string good = MessageToText([] {
        Message m(FourCC("pref"));
        m.AddInt8("MidiChannel", 9);
        m.AddString("MidiPortName", "a port");
        m.AddFloat("BendRange", 6);
        return m;
    }());
    for (int i = 0; i < 60; ++i) {
        std::string content = good;
        for (int flips = 1 + int(random() % 3); flips > 0; --flips) {
            content[random() % content.size()] = char(random());
        }
        WriteFile(content);
        TPreferences store("Vocato");
        int8_t channel = 0;
        store.GetInt8("MidiChannel", 1, &channel);
        EXPECT_TRUE(store.Status() == B_OK || store.IsEmpty());
    }
}
