#include "Graf.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

using namespace vocato::ui;

namespace {

QImage Canvas(int w, int h) {
    QImage image(w, h, QImage::Format_ARGB32);
    image.fill(QColor(0, 0, 255));
    return image;
}

// A canvas with `draw` done on it by a Graf.
template <typename Draw> QImage Drawn(int w, int h, Draw draw) {
    QImage image = Canvas(w, h);
    QPainter p(&image);
    Graf graf(p);
    draw(graf);
    p.end();
    return image;
}

const QRgb kLight = qRgb(255, 255, 255);
const QRgb kDark = qRgb(128, 128, 128);

} // namespace

TEST(Graf, SunkenBevelIsDarkTopLeftAndLightBottomRightAndRaisedSwapsThem) {
    for (bool raised : {false, true}) {
        const QImage image = Drawn(12, 102, [&](Graf& graf) {
            raised ? graf.Top3DRect({0, 0, 10, 100}) : graf.Bottom3DRect({0, 0, 10, 100});
        });
        const QRgb topLeft = raised ? kLight : kDark;
        const QRgb bottomRight = raised ? kDark : kLight;
        EXPECT_EQ(image.pixel(5, 0), topLeft);
        EXPECT_EQ(image.pixel(0, 50), topLeft);
        EXPECT_EQ(image.pixel(5, 100), bottomRight);
        EXPECT_EQ(image.pixel(10, 50), bottomRight);
        EXPECT_EQ(image.pixel(11, 50), qRgb(0, 0, 255)) << "the bevel stays on the rectangle";
    }
}

TEST(Graf, NestedBevelsDrawOneFramePerStepOfDepth) {
    const QImage image = Drawn(20, 20, [](Graf& graf) { graf.Top3DRect({0, 0, 19, 19}, 3); });
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(image.pixel(10, i), kLight) << "frame " << i;
        EXPECT_EQ(image.pixel(10, 19 - i), kDark) << "frame " << i;
    }
    EXPECT_EQ(image.pixel(10, 3), qRgb(0, 0, 255));
}

TEST(Graf, VerticalGradientBlendsEachRowAtItsOwnAlpha) {
    const QImage image = Drawn(5, 11, [](Graf& graf) {
        graf.MakeGradient({0, 0, 4, 10}, QColor(0, 0, 0), QColor(255, 0, 0), true);
    });
    const int alphas[11] = {0, 25, 51, 76, 102, 127, 153, 178, 204, 229, 255};
    for (int i = 0; i <= 10; ++i) {
        EXPECT_NEAR(qRed(image.pixel(2, i)), alphas[i], 1) << "row " << i;
        EXPECT_EQ(qBlue(image.pixel(2, i)), 0) << "the start colour covers the background";
    }
}

TEST(Graf, TriangleDownHasItsApexAtTheBottomCentre) {
    const QImage image = Drawn(9, 11, [](Graf& graf) {
        graf.TriangleDown({0, 0, 8, 10}, QColor(0, 255, 0), QColor(80, 80, 80));
    });
    EXPECT_EQ(image.pixel(4, 10), qRgb(80, 80, 80));
    EXPECT_EQ(image.pixel(0, 10), qRgb(0, 0, 255));
    EXPECT_EQ(image.pixel(4, 3), qRgb(0, 255, 0));
}

TEST(Graf, ShadowTextRestoresTheFontButLeavesTheSecondColour) {
    QImage image = Canvas(80, 30);
    QPainter p(&image);
    QFont font("DejaVu Sans");
    font.setPixelSize(9);
    p.setFont(font);
    Graf graf(p);
    graf.ShadowText(2, 20, "Vocato", QColor(255, 255, 151), QColor(0, 0, 0), "Baskerville",
                    kBoldFace, 14, 0);
    EXPECT_EQ(p.font(), font);
    EXPECT_EQ(p.pen().color(), QColor(0, 0, 0));
    p.end();
    int cream = 0;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 80; ++x) {
            const QRgb c = image.pixel(x, y);
            cream += qRed(c) > 200 && qGreen(c) > 200 && qBlue(c) < 200;
        }
    }
    EXPECT_GT(cream, 5) << "the first pass shows where the second does not cover it";
}
