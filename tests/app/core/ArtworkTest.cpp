#include "ImageResources.h"
#include "Resources.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <string>

using namespace vocato;

namespace {

class ArtworkTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(InitRessources()); }
};

void ExpectSize(const std::string& name, int width, int height) {
    SCOPED_TRACE(name);
    QImage image = LoadImageResource(name.c_str());
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.size(), QSize(width, height));
    QPixmap doubled = LoadPixmapResource(name.c_str(), 2.0);
    EXPECT_EQ(doubled.size(), QSize(2 * width, 2 * height));
    EXPECT_EQ(doubled.deviceIndependentSize().toSize(), QSize(width, height));
    EXPECT_EQ(LoadPixmapResource(name.c_str(), 1.0).size(), QSize(width, height));
}

// The amber of lit keys and lamps: strong red, middling green, little blue.
bool IsLit(QRgb pixel) {
    return qRed(pixel) > 200 && qGreen(pixel) > 80 && qGreen(pixel) < 230 && qBlue(pixel) < 140;
}

// Where the keyboard display marks each semitone inside an octave picture.
constexpr int kNotePos[12] = {5, 9, 16, 22, 26, 36, 42, 47, 52, 58, 64, 68};
constexpr bool kIsBlack[12] = {false, true,  false, true,  false, false,
                               true,  false, true,  false, true,  false};

} // namespace

TEST_F(ArtworkTest, EveryPictureExistsAtItsSizeAndAtDoubleSize) {
    ExpectSize("skin", 600, 310);
    ExpectSize("On", 15, 14);
    for (int i = 0; i <= 12; ++i) {
        ExpectSize("c" + std::to_string(i), 74, 60);
    }
    for (int i = 0; i < 32; ++i) {
        ExpectSize("m" + std::to_string(i), 43, 69);
    }
    ExpectSize("About", 201, 116);
    ExpectSize("AboutScroll", 201, 221);
    ExpectSize("fader", 15, 27);
}

TEST_F(ArtworkTest, AnUnknownNameHasNoPicture) {
    EXPECT_TRUE(LoadImageResource("c13").isNull());
    EXPECT_TRUE(LoadPixmapResource("m32", 2.0).isNull());
}

TEST_F(ArtworkTest, EachOctavePictureLightsExactlyTheKeyAtItsMark) {
    for (int image = 0; image <= 12; ++image) {
        QImage octave = LoadImageResource(("c" + std::to_string(image)).c_str());
        for (int semitone = 0; semitone < 12; ++semitone) {
            SCOPED_TRACE("c" + std::to_string(image) + " semitone " + std::to_string(semitone));
            // Black keys are probed on their upper part, white keys below the black ones.
            int y = kIsBlack[semitone] ? 20 : 50;
            EXPECT_EQ(IsLit(octave.pixel(kNotePos[semitone], y)), semitone == image - 1);
        }
    }
}

TEST_F(ArtworkTest, TheBendWheelTurnsUpWithTheFrameNumberAndRestsAtSixteen) {
    auto indexRow = [](int frame) {
        QImage wheel = LoadImageResource(("m" + std::to_string(frame)).c_str());
        int sum = 0;
        int count = 0;
        for (int y = 0; y < wheel.height(); ++y) {
            if (IsLit(wheel.pixel(21, y))) {
                sum += y;
                ++count;
            }
        }
        return count == 0 ? -1.0 : double(sum) / count;
    };
    EXPECT_NEAR(indexRow(16), 34.5, 1.0);
    double previous = 1e9;
    for (int frame = 0; frame < 32; ++frame) {
        double row = indexRow(frame);
        ASSERT_GE(row, 0) << "frame " << frame << " shows no index line";
        EXPECT_LT(row, previous) << "frame " << frame;
        previous = row;
    }
}

TEST_F(ArtworkTest, TheSkinLeavesTheLampsDarkAndTheBendBarBlack) {
    QImage skin = LoadImageResource("skin");
    QImage on = LoadImageResource("On");
    ASSERT_TRUE(IsLit(on.pixel(7, 7)));
    for (QPoint lamp : {QPoint(452, 157), QPoint(482, 157), QPoint(513, 157), QPoint(544, 157),
                        QPoint(575, 157), QPoint(166, 103), QPoint(166, 131)}) {
        EXPECT_FALSE(IsLit(skin.pixel(lamp + QPoint(7, 7)))) << lamp.x() << "," << lamp.y();
    }
    // The keyboard display erases the bend bar in black, so the skin must be black there.
    for (int x = 9; x <= 590; x += 3) {
        for (int y = 290; y <= 296; ++y) {
            ASSERT_EQ(skin.pixel(x, y), qRgb(0, 0, 0)) << x << "," << y;
        }
    }
}

TEST_F(ArtworkTest, TheNameFieldsArePaleEnoughForBlackText) {
    QImage skin = LoadImageResource("skin");
    // Just right of the buttons, where the names are drawn at y 50, 80 and 115.
    for (QPoint field : {QPoint(300, 46), QPoint(300, 76), QPoint(300, 111), QPoint(158, 170)}) {
        EXPECT_GT(qGray(skin.pixel(field)), 170) << field.x() << "," << field.y();
    }
}

TEST_F(ArtworkTest, TheLinkedPicturesAreWhatTheGeneratorDrawsNow) {
    QTemporaryDir fresh;
    ASSERT_TRUE(fresh.isValid());
    QProcess generator;
    generator.start(VOCATO_ARTWORK_GENERATOR, {fresh.path()});
    ASSERT_TRUE(generator.waitForFinished(120000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();

    QStringList generated;
    QDirIterator files(fresh.path(), {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        generated << QDir(fresh.path()).relativeFilePath(files.next());
    }
    QStringList linked;
    QDirIterator resources(":/vocato", {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
    while (resources.hasNext()) {
        linked << resources.next().mid(QStringLiteral(":/vocato/").size());
    }
    generated.sort();
    linked.sort();
    ASSERT_EQ(generated, linked) << "run the regenerate_artwork target and commit the result";
    for (const QString& file : generated) {
        QImage drawn(QDir(fresh.path()).filePath(file));
        QImage committed(":/vocato/" + file);
        EXPECT_EQ(drawn.convertToFormat(QImage::Format_ARGB32),
                  committed.convertToFormat(QImage::Format_ARGB32))
            << file.toStdString() << " differs: run the regenerate_artwork target";
    }
}
