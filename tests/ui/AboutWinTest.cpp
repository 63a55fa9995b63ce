#include "AboutWin.h"
#include "ResourceArtwork.h"

#include <gtest/gtest.h>

#include <QPointer>
#include <QTest>

using namespace vocato::ui;

TEST(AboutWin, TheStripScrollsOneRowAPulseAndStartsOverAfterItsLastRow) {
    vocato::ResourceArtwork artwork;
    AboutWin box(artwork, false);
    for (int i = 0; i < 164; ++i) {
        box.View()->Pulse();
    }
    EXPECT_FLOAT_EQ(box.View()->ScrollOffset(), 164) << "the 164th pulse showed row 163 first";
    const QImage shot = box.View()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QImage scroll = artwork.Image("AboutScroll").convertToFormat(QImage::Format_RGB32);
    EXPECT_EQ(shot.copy(0, 115, 201, 49), scroll.copy(0, 163, 201, 49));
    box.View()->Pulse();
    EXPECT_FLOAT_EQ(box.View()->ScrollOffset(), 1) << "the 165th pulse starts again at row 0";
}

TEST(AboutWin, TheBoxIsTallerByItsStripAndClosesOnAClickButTheFramelessSplashDoesNot) {
    vocato::ResourceArtwork artwork;
    QPointer<AboutWin> box = new AboutWin(artwork, false);
    QPointer<AboutWin> splash = new AboutWin(artwork, true);
    EXPECT_EQ(box->size(), QSize(201, 116 + 48));
    EXPECT_EQ(splash->size(), QSize(201, 116)) << "exactly the picture";
    EXPECT_TRUE(splash->windowFlags() & Qt::FramelessWindowHint);
    QTest::mouseClick(splash->View(), Qt::LeftButton);
    QTest::keyClick(splash->View(), Qt::Key_Space);
    QTest::mouseClick(box->View(), Qt::LeftButton);
    QTest::qWait(20);
    EXPECT_TRUE(box.isNull()) << "the box deletes itself when it closes";
    ASSERT_FALSE(splash.isNull());
    EXPECT_TRUE(splash->isVisible());
    QPointer<AboutWin> other = new AboutWin(artwork, false);
    QTest::keyClick(other->View(), Qt::Key_A);
    QTest::qWait(20);
    EXPECT_TRUE(other.isNull());
    delete splash;
}
