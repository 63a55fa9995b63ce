#include "Preferences.h"
#include "MessageText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

using namespace vocato;
namespace fs = std::filesystem;

namespace {

// Each test starts without a settings folder in the run's config home.
class PreferencesTest : public ::testing::Test {
protected:
    void SetUp() override { fs::remove_all(Root() / "Vocato"); }
    static fs::path Root() { return std::getenv("XDG_CONFIG_HOME"); }
    static fs::path File() { return Root() / "Vocato" / "Vocato"; }

    void WriteFile(const std::string& content) const {
        fs::create_directories(File().parent_path());
        std::ofstream(File(), std::ios::binary) << content;
    }
};

// A flattenable note range for the GetFlat/SetFlat pair.
struct NoteRange : Flattenable {
    NoteRange(uint8_t low = 0, uint8_t high = 0, uint32_t type = FourCC("NRng"))
        : low(low), high(high), type(type) {}
    uint32_t TypeCode() const override { return type; }
    std::vector<uint8_t> Flatten() const override { return {low, high}; }
    status_t Unflatten(uint32_t code, std::span<const uint8_t> bytes) override {
        if (code != type || bytes.size() != 2) {
            return B_BAD_TYPE;
        }
        low = bytes[0];
        high = bytes[1];
        return B_OK;
    }
    uint8_t low, high;
    uint32_t type;
};

} // namespace

TEST_F(PreferencesTest, FirstStartGivesTheDefaultsAndWritesOnlyTheFileAtTheEnd) {
    {
        TPreferences store("Vocato");
        EXPECT_EQ(store.Status(), B_ENTRY_NOT_FOUND);
        EXPECT_EQ(store.Path(), File().string());
        EXPECT_EQ(store.what, FourCC("pref"));
        EXPECT_TRUE(store.IsEmpty());
        store.SetInt8("MidiChannel", 4);
        EXPECT_FALSE(fs::exists(File()));
    }
    std::vector<fs::path> files(fs::directory_iterator(File().parent_path()), {});
    EXPECT_EQ(files, std::vector<fs::path>{File()}) << "a temporary file was left behind";
    TPreferences again("Vocato");
    int8_t channel = 0;
    EXPECT_EQ(again.Status(), B_OK);
    EXPECT_EQ(again.GetInt8("MidiChannel", 1, &channel), 4);
}

TEST_F(PreferencesTest, EveryTypeComesBackExactlyAndALaterShorterSaveKeepsTheOtherKeys) {
    using std::numeric_limits;
    Message nested(0x00010203);
    nested.AddMessage("_msg", Message(FourCC("MRec")));
    NoteRange range(48, 72);
    Message saved;
    {
        TPreferences store("Vocato");
        store.SetBool("flag", true);
        store.SetInt8("lowest", numeric_limits<int8_t>::min());
        store.SetInt16("highest", numeric_limits<int16_t>::max());
        store.SetInt32("negative", numeric_limits<int32_t>::min());
        store.SetInt64("big", numeric_limits<int64_t>::max());
        store.SetFloat("midiMin", 1.0f / 3.0f);
        store.SetFloat("negativeZero", -0.0f);
        store.SetFloat("infinite", numeric_limits<float>::infinity());
        store.SetDouble("tiny", numeric_limits<double>::denorm_min());
        store.SetString("MidiPortName", std::string(200, 'n').c_str());
        store.SetString("quoted", "say \"hi\"\\ now\nnext line\ttab\x01 é ♪");
        store.SetString("empty", "");
        store.SetString("# not a comment", "end");
        store.SetPoint("where", {-1.5f, 2.25f});
        store.SetRect("_frame", {0, 0, 34, 24});
        store.SetMessage("_e_on", &nested);
        store.SetFlat("Range", &range);
        store.AddData("nothing", FlatData{0, {}});
        saved = store;
        ASSERT_EQ(saved.CountNames(), 18);
    }
    auto longSize = fs::file_size(File());
    {
        TPreferences store("Vocato");
        EXPECT_EQ(static_cast<const Message&>(store), saved);
        float zero = 1;
        EXPECT_TRUE(std::signbit(store.GetFloat("negativeZero", 1, &zero)));
        NoteRange back;
        EXPECT_EQ(store.GetFlat("Range", NoteRange(1, 2), &back), B_OK);
        EXPECT_EQ(back.high, 72);
        store.RemoveName("MidiPortName");
        store.SetFloat("midiMin", 36);
        store.SetFloat("midiMin", -24);
    }
    EXPECT_LT(fs::file_size(File()), longSize);
    saved.RemoveName("MidiPortName");
    saved.ReplaceValue("midiMin", FieldType::Float, 0, -24.0f);
    EXPECT_EQ(static_cast<const Message&>(TPreferences("Vocato")), saved);
}

TEST_F(PreferencesTest, GettersFallBackOnAnotherTypeAndCutStringsToTheBuffer) {
    TPreferences store("Vocato");
    ASSERT_EQ(store.SetInt32("Preset", 9), B_OK);
    EXPECT_EQ(store.SetInt8("Preset", 3), B_BAD_TYPE);
    int8_t preset = 0;
    EXPECT_EQ(store.GetInt8("Preset", 1, &preset), 1);
    EXPECT_EQ(preset, 1);
    int32_t stored = 0;
    EXPECT_EQ(store.GetInt32("Preset", 0, &stored), 9);
    char buffer[256];
    EXPECT_STREQ(store.GetString("Preset", "fallback", buffer, sizeof buffer), "fallback");
    store.SetString("MidiPortName", std::string(300, 'p').c_str());
    std::memset(buffer, 'x', sizeof buffer);
    store.GetString("MidiPortName", "", buffer, sizeof buffer);
    EXPECT_EQ(std::strlen(buffer), 255u);
    EXPECT_EQ(buffer[254], 'p');
    char tiny[1] = {'x'};
    EXPECT_STREQ(store.GetString("MidiPortName", "", tiny, 1), "");
    NoteRange other(1, 2, FourCC("Othr"));
    NoteRange range(0, 0);
    ASSERT_EQ(store.SetFlat("Range", &other), B_OK);
    EXPECT_EQ(store.SetFlat("Range", &range), B_BAD_TYPE);
    EXPECT_EQ(store.GetFlat("Missing", NoteRange(36, 72), &range), B_OK);
    EXPECT_EQ(range.high, 72);
}

TEST_F(PreferencesTest, DamagedFilesGiveTheDefaultsAreKeptAsideAndNeverBreakTheStore) {
    Message written(FourCC("pref"));
    written.AddInt8("MidiChannel", 9);
    written.AddString("PresetName", "Cello");
    const std::string good = MessageToText(written);
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
        }
        std::stringstream kept;
        kept << std::ifstream(File().string() + ".damaged", std::ios::binary).rdbuf();
        EXPECT_EQ(kept.str(), content) << "the damaged file was not kept aside";
        EXPECT_EQ(TPreferences("Vocato").Status(), B_OK);
    }
}

TEST_F(PreferencesTest, AFolderWhereTheFileShouldBeIsUnreadableNotFatal) {
    fs::create_directories(File());
    TPreferences store("Vocato");
    EXPECT_EQ(store.Status(), B_IO_ERROR);
    EXPECT_TRUE(store.IsEmpty());
    store.SetInt8("MidiChannel", 2);
    EXPECT_EQ(store.Save(), B_IO_ERROR);
}

TEST_F(PreferencesTest, ARelativeConfigHomeFallsBackToTheHomeFolder) {
    const char* home = std::getenv("HOME");
    const std::string oldHome = home == nullptr ? "" : home, oldConfig = Root();
    ::setenv("XDG_CONFIG_HOME", "relative/config", 1);
    ::setenv("HOME", oldConfig.c_str(), 1);
    EXPECT_EQ(SettingsDirectory(), oldConfig + "/.config/Vocato");
    ::unsetenv("HOME");
    EXPECT_EQ(SettingsDirectory(), "");
    {
        TPreferences store("Vocato");
        EXPECT_EQ(store.Status(), B_ENTRY_NOT_FOUND);
        EXPECT_EQ(store.Save(), B_ENTRY_NOT_FOUND);
    }
    ::setenv("HOME", oldHome.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", oldConfig.c_str(), 1);
}
