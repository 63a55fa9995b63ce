#include "Resources.h"
#include "ButtonCatalogue.h"
#include "ImageResources.h"

#include <gtest/gtest.h>

#include <QImage>

using namespace vocato;

namespace {

class ResourcesTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(InitRessources()); }
};

Message PictureOf(const Message& archive, const char* face) {
    Message picture;
    archive.FindMessage(face, &picture);
    return picture;
}

} // namespace

TEST_F(ResourcesTest, TheRecordButtonIsATwoStatePictureButtonSendingMRec) {
    Message archive = FindArchivedResource("RecMidi", nullptr);
    std::string text;
    ASSERT_EQ(archive.FindString("class", &text), B_OK);
    EXPECT_EQ(text, "BPictureButton");
    ASSERT_EQ(archive.FindString("_name", &text), B_OK);
    EXPECT_EQ(text, "REC");
    Message sent;
    ASSERT_EQ(archive.FindMessage("_msg", &sent), B_OK);
    EXPECT_EQ(sent.what, FourCC("MRec"));
    EXPECT_TRUE(sent.IsEmpty());
    int32_t behave = 0;
    ASSERT_EQ(archive.FindInt32("_behave", &behave), B_OK);
    EXPECT_EQ(behave, 1);
    Rect frame;
    ASSERT_EQ(archive.FindRect("_frame", &frame), B_OK);
    EXPECT_EQ(frame, (Rect{0, 0, 34, 24}));
}

TEST_F(ResourcesTest, EveryButtonIsArchivedWithItsMessageAndBehaviour) {
    struct Expected {
        const char* name;
        uint32_t what;
        int32_t behave;
        float right;
    };
    const Expected buttons[] = {
        {"RecMidi", FourCC("MRec"), 1, 34},  {"StopMidi", FourCC("MStp"), 0, 34},
        {"WaveFile", FourCC("mOpn"), 0, 37}, {"Input", FourCC("mInp"), 0, 37},
        {"Preset", FourCC("BPst"), 0, 37},   {"Instrument", FourCC("BIns"), 0, 37},
        {"Panic", FourCC("BPan"), 0, 37},    {"PlayWave", FourCC("BPla"), 1, 34},
    };
    for (const Expected& expected : buttons) {
        SCOPED_TRACE(expected.name);
        Message archive = FindArchivedResource(expected.name);
        Message sent;
        int32_t behave = -1;
        Rect frame;
        ASSERT_EQ(archive.FindMessage("_msg", &sent), B_OK);
        EXPECT_EQ(sent.what, expected.what);
        EXPECT_EQ(archive.FindInt32("_behave", &behave), B_OK);
        EXPECT_EQ(behave, expected.behave);
        EXPECT_EQ(archive.FindRect("_frame", &frame), B_OK);
        EXPECT_EQ(frame.right, expected.right);
        EXPECT_EQ(frame.bottom, expected.right - 10);
    }
}

TEST_F(ResourcesTest, EveryButtonFaceExistsAtTheButtonsSizeAndDoubleSize) {
    for (const ButtonDescription& button : kButtonCatalogue) {
        Message archive = FindArchivedResource(button.resourceName);
        for (const char* face : kButtonFaceFields) {
            SCOPED_TRACE(std::string(button.resourceName) + face);
            std::string path;
            ASSERT_EQ(PictureOf(archive, face).FindString("_image", &path), B_OK);
            QImage image(QString::fromStdString(path));
            ASSERT_FALSE(image.isNull());
            EXPECT_EQ(image.width(), int(button.frame.Width()) + 1);
            EXPECT_EQ(image.height(), int(button.frame.Height()) + 1);
            QPixmap doubled = LoadPixmapPath(QString::fromStdString(path), 2.0);
            EXPECT_EQ(doubled.width(), 2 * image.width());
            EXPECT_EQ(doubled.deviceIndependentSize().toSize(), image.size());
        }
    }
}

TEST_F(ResourcesTest, AMissingArchiveGivesAPlaceholderWindowNamingIt) {
    Message archive = FindArchivedResource("NoSuchButton");
    std::string text;
    ASSERT_EQ(archive.FindString("class", &text), B_OK);
    EXPECT_EQ(text, "BWindow");
    ASSERT_EQ(archive.FindString("_title", &text), B_OK);
    EXPECT_EQ(text, "Window \"NoSuchButton\" not found in resources!");
    Rect frame;
    ASSERT_EQ(archive.FindRect("_frame", &frame), B_OK);
    EXPECT_EQ(frame, (Rect{32, 32, 400, 64}));

    ResourceSet empty;
    std::string longName(1000, 'n');
    ASSERT_EQ(FindArchivedResource(longName.c_str(), &empty).FindString("_title", &text), B_OK);
    EXPECT_EQ(text.size(), longName.size() + 33);
}

TEST_F(ResourcesTest, StoreMessageTakesTheLowestFreeId) {
    ResourceSet set;
    for (int32_t id : {0, 1, 3}) {
        ASSERT_EQ(set.AddResource(kArchiveType, id, {}, "taken" + std::to_string(id)), B_OK);
    }
    Message message(FourCC("MRec"));
    message.AddInt32("ID", 27);
    ASSERT_EQ(StoreMessage("Stored", message, &set), B_OK);
    EXPECT_TRUE(set.HasResource(kArchiveType, 2));
    EXPECT_TRUE(set.HasResource(kArchiveType, "Stored"));
    EXPECT_EQ(FindArchivedResource("Stored", &set), message);
    ASSERT_EQ(StoreMessage("Next", message, &set), B_OK);
    EXPECT_TRUE(set.HasResource(kArchiveType, 4));
}

TEST_F(ResourcesTest, LoadMessageFillsFromTheArchiveOrLeavesTheMessageAlone) {
    ResourceSet set;
    Message stored(FourCC("BPan"));
    stored.AddString("class", "BPictureButton");
    StoreMessage("Panic", stored, &set);
    Message loaded;
    ASSERT_EQ(LoadMessage("Panic", &loaded, &set), B_OK);
    EXPECT_EQ(loaded, stored);
    Message untouched(FourCC("keep"));
    EXPECT_EQ(LoadMessage("Missing", &untouched, &set), B_NAME_NOT_FOUND);
    EXPECT_EQ(untouched, Message(FourCC("keep")));
}
