#include "Art.h"

#include <QLinearGradient>
#include <QPainterPath>

#include <cmath>

// "About" (201 x 116), the picture of the about box and the start-up splash,
// and "AboutScroll" (201 x 221), the credits that scroll through a 48-pixel
// strip under it, rows 0 ... 211 of them.
namespace art {

namespace {

constexpr qreal kWidth = 201;

void FillDark(QPainter& p, qreal height) {
    QLinearGradient fill(0, 0, 0, height);
    fill.setColorAt(0, colour::panelTop);
    fill.setColorAt(1, colour::panelBottom);
    p.fillRect(QRectF(0, 0, kWidth, height), fill);
}

// A sung line on the left turns into the held notes of a piano roll.
void DrawVoiceToNotes(QPainter& p) {
    QPainterPath wave;
    for (int x = 0; x <= 86; ++x) {
        qreal envelope = std::sin(x / 86.0 * 3.14159);
        qreal y = 96 + 8 * envelope * std::sin(x * 0.45) * std::cos(x * 0.07);
        x == 0 ? wave.moveTo(14 + x, y) : wave.lineTo(14 + x, y);
    }
    p.setPen(QPen(QColor(0x7f, 0xe0, 0xa8), 1.3));
    p.setBrush(Qt::NoBrush);
    p.drawPath(wave);
    p.setPen(Qt::NoPen);
    const QRectF notes[] = {
        {106, 98, 16, 4}, {124, 92, 12, 4}, {138, 95, 20, 4}, {160, 88, 10, 4}, {172, 91, 16, 4}};
    for (const QRectF& note : notes) {
        p.setBrush(colour::amber);
        p.drawRoundedRect(note, 1.5, 1.5);
    }
}

void DrawAbout(QPainter& p) {
    FillDark(p, 116);
    QRectF mark(14, 16, 34, 34);
    QLinearGradient disc(mark.topLeft(), mark.bottomLeft());
    disc.setColorAt(0, colour::amber);
    disc.setColorAt(1, colour::amberDeep);
    p.setPen(Qt::NoPen);
    p.setBrush(disc);
    p.drawEllipse(mark);
    QPainterPath glyph;
    glyph.moveTo(20, 33);
    glyph.cubicTo(22, 23, 24.5, 23, 26.5, 33);
    glyph.cubicTo(28, 40, 29.5, 40, 31, 33);
    glyph.lineTo(31, 27);
    glyph.lineTo(36.5, 27);
    glyph.lineTo(36.5, 37);
    glyph.lineTo(42, 37);
    p.setPen(QPen(QColor(0x1b, 0x1e, 0x23), 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(glyph);

    p.setFont(Font(30, QFont::Bold));
    p.setPen(QColor(0xee, 0xf0, 0xf3));
    p.drawText(QPointF(56, 45), QStringLiteral("vocato"));
    DrawCaption(p, QPointF(58, 60), QStringLiteral("VOICE  TO  MIDI"), Qt::AlignLeft, 8);
    DrawCaption(p, QPointF(187, 60), QStringLiteral("1.0.0"), Qt::AlignRight, 8);
    p.setPen(QColor(255, 255, 255, 30));
    p.drawLine(QPointF(14, 72.5), QPointF(187, 72.5));
    DrawVoiceToNotes(p);
    p.setPen(QPen(QColor(0, 0, 0), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRect(QRectF(0.5, 0.5, kWidth - 1, 115));
}

void DrawAboutScroll(QPainter& p) {
    // Flat, not a gradient: the picture scrolls, and a gradient would crawl with it.
    p.fillRect(QRectF(0, 0, kWidth, 221), colour::panelBottom);
    struct Line {
        const char* text;
        bool heading;
    };
    const Line lines[] = {
        {"Sing, hum or play:", false},
        {"an instrument follows you.", false},
        {"", false},
        {"LISTENS", true},
        {"pitch and level, live", false},
        {"", false},
        {"PLAYS", true},
        {"notes, pitch bend, expression", false},
        {"on any General MIDI sound", false},
        {"", false},
        {"CONNECTS", true},
        {"JACK, ALSA, FluidSynth, LV2", false},
        {"records Standard MIDI Files", false},
        {"", false},
        {"MADE FOR LINUX", true},
        {"with Qt, libsndfile and friends", false},
    };
    qreal y = 18;
    for (const Line& line : lines) {
        if (line.heading) {
            DrawCaption(p, QPointF(kWidth / 2, y), QString::fromUtf8(line.text), Qt::AlignHCenter,
                        8);
        } else if (line.text[0] != '\0') {
            QFont font = Font(10, QFont::Normal);
            p.setFont(font);
            QString text = QString::fromUtf8(line.text);
            qreal width = QFontMetricsF(font).horizontalAdvance(text);
            p.setPen(QColor(0xdc, 0xe0, 0xe6));
            p.drawText(QPointF((kWidth - width) / 2, y), text);
        }
        y += line.text[0] == '\0' ? 7 : 12.5;
    }
}

} // namespace

void AddAboutPictures(std::vector<Artwork>& out) {
    out.push_back({QStringLiteral("images/About.png"), QSize(201, 116), DrawAbout});
    out.push_back({QStringLiteral("images/AboutScroll.png"), QSize(201, 221), DrawAboutScroll});
}

} // namespace art
