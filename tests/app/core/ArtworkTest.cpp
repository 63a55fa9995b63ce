#include "ImageResources.h"
#include "Resources.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

using namespace vocato;

namespace {

// The amber of lit keys and lamps: strong red, middling green, little blue.
bool IsLit(QRgb pixel) {
    return qRed(pixel) > 200 && qGreen(pixel) > 80 && qGreen(pixel) < 230 && qBlue(pixel) < 140;
}

} // namespace

// A screen at double density gets every picture, buttons included, from its twin at double size.
TEST(ArtworkTest, EveryPictureHasATwinAtDoubleSize) {
    int pictures = 0;
    for (QDirIterator it(":/vocato", {"*.png"}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        if (path.endsWith("@2x.png")) {
            continue;
        }
        SCOPED_TRACE(path.toStdString());
        const QSize size = QImage(path).size();
        const QPixmap doubled = LoadPixmapPath(path, 2.0);
        EXPECT_EQ(doubled.size(), 2 * size);
        EXPECT_EQ(doubled.deviceIndependentSize().toSize(), size);
        EXPECT_EQ(LoadPixmapPath(path, 1.0).size(), size);
        ++pictures;
    }
    EXPECT_GT(pictures, 50);
}

TEST(ArtworkTest, EachOctavePictureLightsExactlyTheKeyAtTheDisplaysMark) {
    // Where the display marks each semitone inside an octave picture; black keys
    // are probed on their upper part, white keys below the black ones.
    const int notePos[12] = {5, 9, 16, 22, 26, 36, 42, 47, 52, 58, 64, 68};
    const bool isBlack[12] = {false, true,  false, true,  false, false,
                              true,  false, true,  false, true,  false};
    for (int image = 0; image <= 12; ++image) {
        QImage octave = LoadImageResource(("c" + std::to_string(image)).c_str());
        for (int semitone = 0; semitone < 12; ++semitone) {
            EXPECT_EQ(IsLit(octave.pixel(notePos[semitone], isBlack[semitone] ? 20 : 50)),
                      semitone == image - 1)
                << "c" << image << " semitone " << semitone;
        }
    }
}

TEST(ArtworkTest, TheLinkedPicturesAreWhatTheGeneratorDrawsNow) {
    QTemporaryDir fresh;
    ASSERT_TRUE(fresh.isValid());
    QProcess generator;
    generator.start(VOCATO_ARTWORK_GENERATOR, {fresh.path()});
    ASSERT_TRUE(generator.waitForFinished(120000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();

    auto list = [](const QString& root) {
        QStringList files;
        QDirIterator it(root, {"*.png"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            files << QDir(root).relativeFilePath(it.next());
        }
        files.sort();
        return files;
    };
    QStringList generated = list(fresh.path());
    ASSERT_EQ(generated, list(":/vocato")) << "run the regenerate_artwork target and commit";
    for (const QString& file : generated) {
        EXPECT_EQ(QImage(QDir(fresh.path()).filePath(file)).convertToFormat(QImage::Format_ARGB32),
                  QImage(":/vocato/" + file).convertToFormat(QImage::Format_ARGB32))
            << file.toStdString() << " differs: run the regenerate_artwork target";
    }
}
