#include "DoubleSlider.h"
#include "OnSlider.h"
#include "PanelFixture.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

using namespace vocato::ui;

namespace {

struct RangeSlider {
    RangeSlider() {
        parent.resize(600, 220);
        slider = new DoubleSlider(&parent, QRect(QPoint(60, 199), QPoint(577, 209)), &low, &high,
                                  24, 108, 48);
        parent.show();
    }
    // Presses on a thumb, drags to x and releases there.
    void Drag(float from, int to) {
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(int(from), 5));
        QMouseEvent move(QEvent::MouseMove, QPointF(to, 5), slider->mapToGlobal(QPointF(to, 5)),
                         Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(slider, &move);
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(to, 5));
    }

    float low = 48, high = 72;
    QWidget parent;
    DoubleSlider* slider;
};

} // namespace

TEST(DoubleSlider, KeyGeometryMatchesTheKeyboardBelow) {
    EXPECT_FLOAT_EQ(DoubleSlider::GetPixel(24), 5);
    EXPECT_FLOAT_EQ(DoubleSlider::GetPixel(48), 153);
    EXPECT_FLOAT_EQ(DoubleSlider::GetPixel(72), 301);
    EXPECT_FLOAT_EQ(DoubleSlider::GetPixel(107), 512);
    EXPECT_EQ(DoubleSlider::NoteAt(0), 24);
    EXPECT_EQ(DoubleSlider::NoteAt(73), 35);
    EXPECT_EQ(DoubleSlider::NoteAt(74), 36);
    EXPECT_EQ(DoubleSlider::NoteAt(517), 107);
    EXPECT_FLOAT_EQ(DoubleSlider::GetPixel(10), 5)
        << "a stored note below the keyboard stays on it";
}

TEST(DoubleSlider, ASpanOfTheLargestWidthIsRefusedButTheReleaseStillReports) {
    RangeSlider r;
    QSignalSpy released(r.slider, &DoubleSlider::Released);
    const float highX = DoubleSlider::GetPixel(72);
    r.Drag(highX, int(DoubleSlider::GetPixel(96)));
    EXPECT_FLOAT_EQ(r.high, 72) << "96 - 48 is the largest span, not less";
    EXPECT_EQ(released.count(), 1);
    r.Drag(highX, int(DoubleSlider::GetPixel(95)));
    EXPECT_FLOAT_EQ(r.high, 95);
    EXPECT_FLOAT_EQ(r.low, 48);
    EXPECT_EQ(released.count(), 2);
}

TEST(DoubleSlider, TheLowThumbStopsAtTheHighThumbAndAClickElsewhereDoesNothing) {
    RangeSlider r;
    QSignalSpy released(r.slider, &DoubleSlider::Released);
    r.Drag(DoubleSlider::GetPixel(48), 500);
    EXPECT_EQ(r.low, 72) << "the low thumb stops at the high thumb's note";
    r.Drag(400, 450);
    EXPECT_EQ(released.count(), 1);
}

TEST(OnSlider, TheTrackMapsPixelsOntoTheRangeAndReportsOnRelease) {
    vocato::ResourceArtwork artwork;
    QWidget parent;
    parent.resize(200, 200);
    const QImage fader = artwork.Image("fader");
    ASSERT_EQ(fader.size(), QSize(15, 27));
    auto* slider = new OnSlider(&parent, QRect(QPoint(16, 156), QPoint(143, 183)), 0, 0, 24,
                                artwork.Image("skin"), fader);
    parent.show();
    EXPECT_FLOAT_EQ(slider->GetPixel(24), 113);
    const PixRect thumb = slider->GetThumb(24);
    EXPECT_FLOAT_EQ(thumb.left, 113);
    EXPECT_FLOAT_EQ(thumb.right, 127);
    EXPECT_FLOAT_EQ(thumb.bottom, 26);

    QSignalSpy released(slider, &OnSlider::Released);
    const auto click = [&](int x) {
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(x, 10));
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(x, 10));
    };
    click(120);
    ASSERT_EQ(released.count(), 1);
    EXPECT_FLOAT_EQ(released.at(0).at(0).toFloat(), 24);
    click(7);
    EXPECT_FLOAT_EQ(slider->Value(), 0);
    click(3);
    EXPECT_FLOAT_EQ(slider->Value(), 0) << "outside the track the value stays";
    EXPECT_EQ(released.count(), 3);

    slider->SetValue(12);
    QTest::qWait(20);
    EXPECT_TRUE(vocato::ui::testing::Shows(slider->grab().toImage(), fader,
                                           slider->GetThumb(12).ToQRect().topLeft(),
                                           artwork.Image("skin").copy(slider->geometry())))
        << "the thumb moved to the middle of the track";
}
