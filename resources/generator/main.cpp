// Draws Vocato's artwork into PNG files and writes the Qt resource file that
// lists them. Usage: vocato_artwork RESOURCES_DIR [--preview SHEET.png]
// Every picture is written at its nominal size and at twice that size
// ("name@2x.png") for high-density screens.

#include "Art.h"
#include "Preview.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QTextStream>

#include <cstdio>

namespace {

QImage Render(const art::Artwork& artwork, int scale) {
    QImage image(artwork.size * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.scale(scale, scale);
    artwork.draw(painter);
    painter.end();
    return image;
}

QString DoubledName(const QString& file) {
    return file.left(file.size() - 4) + QStringLiteral("@2x.png");
}

bool WriteQrc(const QDir& root, const std::vector<art::Artwork>& artworks) {
    QFile qrc(root.filePath(QStringLiteral("vocato.qrc")));
    if (!qrc.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        return false;
    }
    QTextStream out(&qrc);
    out << "<!-- Written by vocato_artwork; regenerate instead of editing. -->\n"
        << "<RCC>\n  <qresource prefix=\"/vocato\">\n";
    for (const art::Artwork& artwork : artworks) {
        out << "    <file>" << artwork.file << "</file>\n";
        out << "    <file>" << DoubledName(artwork.file) << "</file>\n";
    }
    out << "  </qresource>\n</RCC>\n";
    return out.status() == QTextStream::Ok;
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    QStringList arguments = application.arguments();
    if (arguments.size() != 2 && !(arguments.size() == 4 && arguments[2] == "--preview")) {
        std::fprintf(stderr, "usage: vocato_artwork RESOURCES_DIR [--preview SHEET.png]\n");
        return 2;
    }
    QDir root(arguments[1]);
    std::vector<art::Artwork> artworks;
    art::AddSkin(artworks);
    art::AddIndicatorAndFader(artworks);
    art::AddKeyboardOctaves(artworks);
    art::AddBendWheel(artworks);
    art::AddAboutPictures(artworks);
    art::AddButtonFaces(artworks);

    for (const art::Artwork& artwork : artworks) {
        root.mkpath(QFileInfo(root.filePath(artwork.file)).path());
        if (!Render(artwork, 1).save(root.filePath(artwork.file)) ||
            !Render(artwork, 2).save(root.filePath(DoubledName(artwork.file)))) {
            std::fprintf(stderr, "vocato_artwork: cannot write %s\n", qPrintable(artwork.file));
            return 1;
        }
    }
    if (!WriteQrc(root, artworks)) {
        std::fprintf(stderr, "vocato_artwork: cannot write vocato.qrc\n");
        return 1;
    }
    if (arguments.size() == 4 && !art::WritePreview(root, arguments[3])) {
        std::fprintf(stderr, "vocato_artwork: cannot write %s\n", qPrintable(arguments[3]));
        return 1;
    }
    std::printf("vocato_artwork: %zu pictures in %s\n", artworks.size(),
                qPrintable(root.absolutePath()));
    return 0;
}
