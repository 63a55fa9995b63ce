#include "Resources.h"
#include "ButtonCatalogue.h"
#include "Diagnostics.h"

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

TEST(ResourcesTest, EveryButtonFaceExistsAtTheButtonsSize) {
    for (const ButtonDescription& button : kButtonCatalogue) {
        Message archive = FindArchivedResource(button.resourceName);
        for (const char* face : kButtonFaceFields) {
            SCOPED_TRACE(std::string(button.resourceName) + face);
            Message picture;
            std::string path;
            archive.FindMessage(face, &picture);
            ASSERT_EQ(picture.FindString("_image", &path), B_OK);
            EXPECT_EQ(QImage(QString::fromStdString(path)).size(),
                      QSize(int(button.frame.Width()) + 1, int(button.frame.Height()) + 1));
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
