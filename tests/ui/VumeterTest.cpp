#include "Vumeter.h"

#include <gtest/gtest.h>

#include <QTest>

#include <atomic>

using namespace vocato::ui;

namespace {

struct Meter {
    Meter() {
        parent->resize(20, 110);
        parent->show();
    }
    QImage Shot() { return meter->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    // Lit rows of the bar's middle column.
    int LitRows() {
        const QImage shot = Shot();
        int lit = 0;
        for (int y = 1; y <= 99; ++y) {
            lit += shot.pixel(5, y) != qRgb(0, 0, 0);
        }
        return lit;
    }
    void Show(float v) {
        value = v;
        QTest::qWait(3 * Vumeter::kPollMs);
    }

    std::atomic<float> value{0.0f};
    std::unique_ptr<QWidget> parent = std::make_unique<QWidget>();
    Vumeter* meter = new Vumeter(parent.get(), QRect(0, 0, 11, 101), "Velocity", 0, 127, &value);
};

} // namespace

TEST(Vumeter, TheLevelFollowsTheWatchedValueLinearly) {
    Meter m;
    m.Show(0.0f);
    EXPECT_EQ(m.LitRows(), 0) << "the first poll blanks the bar above zero";
    m.Show(127.0f);
    EXPECT_EQ(m.LitRows(), 99);
    const QImage full = m.Shot();
    EXPECT_GT(qRed(full.pixel(5, 2)), 200) << "red at the top";
    EXPECT_LT(qGreen(full.pixel(5, 2)), 100);
    EXPECT_EQ(full.pixel(5, 90), qRgb(143, 255, 31)) << "green at the bottom";
    m.Show(63.5f);
    EXPECT_NEAR(m.LitRows(), 50, 1);
    EXPECT_EQ(m.Shot().pixel(5, 99), qRgb(143, 255, 31));
    m.Show(0.0f);
    EXPECT_EQ(m.LitRows(), 0);
}

TEST(Vumeter, LedDisplayRebuildsAtOnceOnlyWhenAsked) {
    Meter m;
    m.Show(127.0f);
    m.meter->ChangeLedDisplay(1, false);
    QTest::qWait(20);
    EXPECT_NE(m.Shot().pixel(5, 81), qRgb(0, 0, 0));
    m.meter->ChangeLedDisplay(1, true);
    QTest::qWait(20);
    const QImage shot = m.Shot();
    EXPECT_EQ(shot.pixel(5, 81), qRgb(0, 0, 0)) << "a separator on every second row";
    EXPECT_NE(shot.pixel(5, 82), qRgb(0, 0, 0));
}

TEST(Vumeter, ZonesSitAtSixAndThirtyDecibelsBelowFullScaleAndAResizeMovesThemAndKeepsTheLevel) {
    Meter m;
    EXPECT_FLOAT_EQ(m.meter->BarLength(), 98.0f);
    EXPECT_NEAR(m.meter->MedianPixel(), 11.76, 0.01);
    EXPECT_NEAR(m.meter->LowPixel(), 58.8, 0.01);
    m.Show(127.0f);
    m.meter->SetLowValue(20);
    m.meter->resize(11, 201);
    QTest::qWait(20);
    EXPECT_FLOAT_EQ(m.meter->BarLength(), 198.0f);
    EXPECT_LT(m.meter->LowPixel(), 198.0f * 0.6f) << "-20 dB lies higher up than -30 dB";
    EXPECT_EQ(m.Shot().pixel(5, 150), qRgb(143, 255, 31));
}
