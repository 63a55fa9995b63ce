#include "Resources.h"
#include "ButtonCatalogue.h"
#include "Diagnostics.h"
#include "ImageResources.h"

#include <gtest/gtest.h>

#include <QImage>

using namespace vocato;

namespace {

// For the whole run: the linked resources, and no diagnostic lines to clutter the test log.
class AppCoreEnvironment : public ::testing::Environment {
    void SetUp() override {
        media::SetDiagnosticsQuiet(true);
        ASSERT_TRUE(InitRessources());
    }
};
[[maybe_unused]] const auto* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new AppCoreEnvironment);

} // namespace

TEST(ResourcesTest, EveryButtonIsAPictureButtonArchivedWithItsMessageAndBehaviour) {
    const std::tuple<const char*, uint32_t, int32_t, float> buttons[] = {
        {"RecMidi", FourCC("MRec"), 1, 34},  {"StopMidi", FourCC("MStp"), 0, 34},
        {"WaveFile", FourCC("mOpn"), 0, 37}, {"Input", FourCC("mInp"), 0, 37},
        {"Preset", FourCC("BPst"), 0, 37},   {"Instrument", FourCC("BIns"), 0, 37},
        {"Panic", FourCC("BPan"), 0, 37},    {"PlayWave", FourCC("BPla"), 1, 34},
    };
    for (const auto& [name, what, behave, size] : buttons) {
        SCOPED_TRACE(name);
        Message archive = FindArchivedResource(name, nullptr);
        std::string text;
        Message sent;
        int32_t foundBehave = -1;
        Rect frame;
        EXPECT_EQ(archive.FindString("class", &text), B_OK);
        EXPECT_EQ(text, "BPictureButton");
        ASSERT_EQ(archive.FindMessage("_msg", &sent), B_OK);
        EXPECT_EQ(sent, Message(what));
        EXPECT_EQ(archive.FindInt32("_behave", &foundBehave), B_OK);
        EXPECT_EQ(foundBehave, behave);
        EXPECT_EQ(archive.FindRect("_frame", &frame), B_OK);
        EXPECT_EQ(frame, (Rect{0, 0, size, size - 10}));
    }
    std::string label;
    EXPECT_EQ(FindArchivedResource("RecMidi").FindString("_name", &label), B_OK);
    EXPECT_EQ(label, "REC");
}

TEST(ResourcesTest, EveryButtonFaceExistsAtTheButtonsSizeAndDoubleSize) {
    for (const ButtonDescription& button : kButtonCatalogue) {
        Message archive = FindArchivedResource(button.resourceName);
        for (const char* face : kButtonFaceFields) {
            SCOPED_TRACE(std::string(button.resourceName) + face);
            Message picture;
            std::string path;
            archive.FindMessage(face, &picture);
            ASSERT_EQ(picture.FindString("_image", &path), B_OK);
            QImage image(QString::fromStdString(path));
            EXPECT_EQ(image.size(),
                      QSize(int(button.frame.Width()) + 1, int(button.frame.Height()) + 1));
            QPixmap doubled = LoadPixmapPath(QString::fromStdString(path), 2.0);
            EXPECT_EQ(doubled.size(), 2 * image.size());
            EXPECT_EQ(doubled.deviceIndependentSize().toSize(), image.size());
        }
    }
}

TEST(ResourcesTest, AMissingArchiveGivesAPlaceholderWindowNamingIt) {
    Message archive = FindArchivedResource("NoSuchButton");
    std::string text;
    Rect frame;
    EXPECT_EQ(archive.FindString("class", &text), B_OK);
    EXPECT_EQ(text, "BWindow");
    EXPECT_EQ(archive.FindRect("_frame", &frame), B_OK);
    EXPECT_EQ(frame, (Rect{32, 32, 400, 64}));
    ASSERT_EQ(archive.FindString("_title", &text), B_OK);
    EXPECT_EQ(text, "Window \"NoSuchButton\" not found in resources!");
    ResourceSet empty;
    std::string longName(1000, 'n');
    ASSERT_EQ(FindArchivedResource(longName.c_str(), &empty).FindString("_title", &text), B_OK);
    EXPECT_EQ(text.size(), longName.size() + 33);
}

TEST(ResourcesTest, StoredMessagesTakeTheLowestFreeIdAndLoadBack) {
    ResourceSet set;
    for (int32_t id : {0, 1, 3}) {
        ASSERT_EQ(set.AddResource(kArchiveType, id, {}, "taken" + std::to_string(id)), B_OK);
    }
    Message message(FourCC("MRec"));
    message.AddInt32("ID", 27);
    ASSERT_EQ(StoreMessage("Stored", message, &set), B_OK);
    EXPECT_TRUE(set.HasResource(kArchiveType, 2));
    ASSERT_EQ(StoreMessage("Next", message, &set), B_OK);
    EXPECT_TRUE(set.HasResource(kArchiveType, 4));
    Message loaded;
    ASSERT_EQ(LoadMessage("Stored", &loaded, &set), B_OK);
    EXPECT_EQ(loaded, message);
    Message untouched(FourCC("keep"));
    EXPECT_EQ(LoadMessage("Missing", &untouched, &set), B_NAME_NOT_FOUND);
    EXPECT_EQ(untouched, Message(FourCC("keep")));
}
