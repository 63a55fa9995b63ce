#include "Art.h"

#include <QLinearGradient>
#include <QPainterPath>

#include <array>

// One octave of the note keyboard, 74 x 60: "c0" with no key lit and "c1" ...
// "c12" with the key of C ... B lit. The note display marks the sounding key
// at these x offsets (the same table the display uses), so every key is
// centred on its offset.
namespace art {

namespace {

constexpr qreal kOctaveWidth = 74;
constexpr qreal kHeight = 60;
constexpr qreal kWhiteWidth = kOctaveWidth / 7;
constexpr qreal kBlackWidth = 6.4;
constexpr qreal kBlackHeight = 36;
constexpr std::array<int, 12> kNotePos = {5, 9, 16, 22, 26, 36, 42, 47, 52, 58, 64, 68};
constexpr std::array<bool, 12> kIsBlack = {false, true,  false, true,  false, false,
                                           true,  false, true,  false, true,  false};

QRectF WhiteKey(int whiteIndex) {
    return QRectF(whiteIndex * kWhiteWidth, 0, kWhiteWidth, kHeight);
}

QRectF BlackKey(int semitone) {
    qreal centre = kNotePos[size_t(semitone)] + 0.5;
    return QRectF(centre - kBlackWidth / 2, 0, kBlackWidth, kBlackHeight);
}

void DrawWhiteKey(QPainter& p, const QRectF& r, bool lit) {
    QRectF key = r.adjusted(0.5, 0, -0.5, -0.5);
    QPainterPath shape;
    shape.addRoundedRect(key.adjusted(0, -3, 0, 0), 1.6, 1.6);
    QLinearGradient fill(key.topLeft(), key.bottomLeft());
    if (lit) {
        fill.setColorAt(0, QColor(0xff, 0xc8, 0x6a));
        fill.setColorAt(0.85, colour::amber);
        fill.setColorAt(1, colour::amberDeep);
    } else {
        fill.setColorAt(0, QColor(0xe4, 0xe1, 0xd9));
        fill.setColorAt(0.85, QColor(0xf7, 0xf5, 0xef));
        fill.setColorAt(1, QColor(0xc9, 0xc5, 0xbb));
    }
    p.setPen(Qt::NoPen);
    p.setBrush(fill);
    QPainterPath bounds;
    bounds.addRect(r);
    p.drawPath(shape.intersected(bounds));
}

void DrawBlackKey(QPainter& p, const QRectF& r, bool lit) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x05, 0x05, 0x06));
    p.drawRoundedRect(r.adjusted(-0.6, -2, 0.6, 0.6), 1.2, 1.2);
    QRectF top = r.adjusted(0.7, 0, -0.7, -4);
    QLinearGradient fill(top.topLeft(), top.bottomLeft());
    if (lit) {
        fill.setColorAt(0, QColor(0xc8, 0x60, 0x08));
        fill.setColorAt(1, QColor(0xff, 0xb0, 0x40));
    } else {
        fill.setColorAt(0, QColor(0x1c, 0x1d, 0x20));
        fill.setColorAt(1, QColor(0x3a, 0x3c, 0x41));
    }
    p.setBrush(fill);
    p.drawRoundedRect(top, 1, 1);
    // The key's front face, catching the light.
    QRectF front(r.left() + 0.7, r.bottom() - 4, r.width() - 1.4, 3.4);
    p.setBrush(lit ? QColor(0xff, 0xd0, 0x80) : QColor(0x55, 0x58, 0x5e));
    p.drawRoundedRect(front, 1, 1);
}

void DrawOctave(QPainter& p, int litSemitone) {
    p.fillRect(QRectF(0, 0, kOctaveWidth, kHeight), QColor(0x0c, 0x0c, 0x0e));
    int white = 0;
    for (int semitone = 0; semitone < 12; ++semitone) {
        if (!kIsBlack[size_t(semitone)]) {
            DrawWhiteKey(p, WhiteKey(white++), semitone == litSemitone);
        }
    }
    // Felt shadow along the top, where the keys go under the case.
    QLinearGradient shadow(0, 0, 0, 6);
    shadow.setColorAt(0, QColor(0, 0, 0, 150));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    p.fillRect(QRectF(0, 0, kOctaveWidth, 6), shadow);
    for (int semitone = 0; semitone < 12; ++semitone) {
        if (kIsBlack[size_t(semitone)]) {
            DrawBlackKey(p, BlackKey(semitone), semitone == litSemitone);
        }
    }
}

} // namespace

void AddKeyboardOctaves(std::vector<Artwork>& out) {
    for (int image = 0; image <= 12; ++image) {
        out.push_back({QStringLiteral("images/c%1.png").arg(image), QSize(74, 60),
                       [image](QPainter& p) { DrawOctave(p, image - 1); }});
    }
}

} // namespace art
