#include "Art.h"

#include <QLinearGradient>
#include <QPainterPath>

// The skin is the front panel's background. The views draw over fixed places
// of it (texts, lamps, meters, sliders, buttons), so every area below is placed
// where those views expect it; the comments give the view that uses each one.
namespace art {

namespace {

constexpr int kWidth = 600;
constexpr int kHeight = 310;

// Inclusive pixel corners, as the views give their areas.
QRectF Area(qreal left, qreal top, qreal right, qreal bottom) {
    return QRectF(left, top, right - left + 1, bottom - top + 1);
}

void DrawBackground(QPainter& p) {
    QLinearGradient fill(0, 0, 0, kHeight);
    fill.setColorAt(0, colour::panelTop);
    fill.setColorAt(1, colour::panelBottom);
    p.fillRect(QRectF(0, 0, kWidth, kHeight), fill);
}

// Oscilloscope: the trace is drawn in columns 16 ... 142 around row 71.
void DrawScope(QPainter& p) {
    DrawCaption(p, QPointF(16, 35), QStringLiteral("SIGNAL"));
    QRectF screen = Area(16, 39, 143, 112);
    DrawWell(p, screen.adjusted(-2, -2, 2, 2), 3);
    QLinearGradient glass(screen.topLeft(), screen.bottomLeft());
    glass.setColorAt(0, QColor(0x0b, 0x1d, 0x15));
    glass.setColorAt(0.5, QColor(0x0e, 0x24, 0x1a));
    glass.setColorAt(1, QColor(0x08, 0x17, 0x10));
    p.fillRect(screen, glass);
    p.setPen(QPen(QColor(90, 210, 140, 34), 1));
    for (qreal x = 16 + 16; x < 143; x += 16) {
        p.drawLine(QPointF(x + 0.5, 39), QPointF(x + 0.5, 113));
    }
    for (qreal y : {39.0 + 8, 55.0, 87.0, 103.0}) {
        p.drawLine(QPointF(16, y + 0.5), QPointF(144, y + 0.5));
    }
    p.setPen(QPen(QColor(90, 210, 140, 80), 1));
    p.drawLine(QPointF(16, 71.5), QPointF(144, 71.5));
}

// Bend-range slider: its track is copied from here behind a 15 x 27 thumb
// whose centre runs from x 23 (0 semitones) to x 136 (24).
void DrawBendRange(QPainter& p) {
    p.setPen(QPen(QColor(0, 0, 0, 120), 1));
    p.drawLine(QPointF(14, 121.5), QPointF(182, 121.5));
    p.setPen(QPen(QColor(255, 255, 255, 22), 1));
    p.drawLine(QPointF(14, 122.5), QPointF(182, 122.5));

    DrawWell(p, QRectF(19, 167, 121, 5), 2.5);
    for (int semitones = 0; semitones <= 24; semitones += 2) {
        qreal x = 23.5 + semitones * 113.0 / 24.0;
        bool major = semitones % 6 == 0;
        p.setPen(QPen(major ? colour::engraving : QColor(0x6a, 0x72, 0x7e), 1));
        p.drawLine(QPointF(x, 176), QPointF(x, major ? 182 : 179));
        if (major) {
            DrawCaption(p, QPointF(x, 191), QString::number(semitones), Qt::AlignHCenter, 7);
        }
    }
    // The main view prints the range, in black, with its baseline at y 174.
    DrawLcd(p, Area(145, 161, 173, 181));
    DrawCaption(p, QPointF(159, 191), QStringLiteral("ST"), Qt::AlignHCenter, 6.5);
}

// Input source: the main view lights (166, 103) for the sound file and
// (166, 131) for the live input, and restores (162, 98) - (184, 162) from here.
void DrawSourceSelector(QPainter& p) {
    DrawWell(p, Area(162, 99, 184, 157), 4);
    DrawLed(p, QRectF(166, 103, 15, 14), false);
    DrawLed(p, QRectF(166, 131, 15, 14), false);
    DrawCaption(p, QPointF(173.5, 124), QStringLiteral("FILE"), Qt::AlignHCenter, 6.5);
    DrawCaption(p, QPointF(173.5, 152), QStringLiteral("LIVE"), Qt::AlignHCenter, 6.5);
    DrawCaption(p, QPointF(173.5, 94), QStringLiteral("SRC"), Qt::AlignHCenter, 6.5);
}

// Instrument, preset and sound-file names: black text at (231, 50), (231, 80)
// and (231, 115). Each field starts under its button, which docks onto it; the
// sound file's field stops short of the expression meter.
void DrawNameFields(QPainter& p) {
    DrawLcd(p, Area(224, 36, 396, 59));
    DrawLcd(p, Area(224, 64, 396, 86));
    DrawLcd(p, Area(224, 99, 352, 122));
    DrawCaption(p, QPointF(418.5, 72), QStringLiteral("PANIC"), Qt::AlignHCenter);
    DrawCaption(p, QPointF(237, 142), QStringLiteral("AUDIO INPUT"));
}

// Transport buttons at (193, 159), (232, 159) and (273, 159), 35 x 25 each.
void DrawTransportCaptions(QPainter& p) {
    DrawCaption(p, QPointF(210.5, 192), QStringLiteral("PLAY"), Qt::AlignHCenter);
    DrawCaption(p, QPointF(249.5, 192), QStringLiteral("REC"), Qt::AlignHCenter);
    DrawCaption(p, QPointF(290.5, 192), QStringLiteral("STOP"), Qt::AlignHCenter);
}

// Expression and velocity meters sit at (380, 90) - (390, 190) and
// (410, 90) - (420, 190); their labels run upward just left of each.
void DrawMeterSlots(QPainter& p) {
    DrawWell(p, Area(378, 88, 392, 192), 2);
    DrawWell(p, Area(408, 88, 422, 192), 2);
}

void DrawLogo(QPainter& p) {
    QRectF mark(458, 34, 30, 30);
    p.setPen(Qt::NoPen);
    QLinearGradient disc(mark.topLeft(), mark.bottomLeft());
    disc.setColorAt(0, colour::amber);
    disc.setColorAt(1, colour::amberDeep);
    p.setBrush(disc);
    p.drawEllipse(mark);
    // A sung wave on the left settles into held notes on the right.
    QPainterPath path;
    path.moveTo(463, 49);
    path.cubicTo(465, 40, 467, 40, 469, 49);
    path.cubicTo(470.5, 55, 472, 55, 473, 49);
    path.lineTo(473, 44);
    path.lineTo(478, 44);
    path.lineTo(478, 52);
    path.lineTo(483, 52);
    p.setPen(QPen(QColor(0x1b, 0x1e, 0x23), 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);

    QFont word = Font(23, QFont::Bold);
    word.setLetterSpacing(QFont::AbsoluteSpacing, 0.5);
    p.setFont(word);
    p.setPen(QColor(0, 0, 0, 140));
    p.drawText(QPointF(494, 58), QStringLiteral("vocato"));
    p.setPen(QColor(0xee, 0xf0, 0xf3));
    p.drawText(QPointF(494, 57), QStringLiteral("vocato"));
    DrawCaption(p, QPointF(497, 76), QStringLiteral("VOICE  TO  MIDI"), Qt::AlignLeft, 7.5);
    DrawCaption(p, QPointF(458, 100), QStringLiteral("REAL-TIME PITCH TRACKER"), Qt::AlignLeft,
                6.5);
}

// Transposition lamps at x 452, 482, 513, 544 and 575, row 157, 15 x 14; the
// main view restores (442, 157) - (595, 177) from here and prints the values
// below at y 190.
void DrawTransposeSelector(QPainter& p) {
    p.setPen(QColor(0, 0, 0, 120));
    p.drawLine(QPointF(450, 111.5), QPointF(590, 111.5));
    p.setPen(QColor(255, 255, 255, 22));
    p.drawLine(QPointF(450, 112.5), QPointF(590, 112.5));

    DrawWell(p, QRectF(458, 162.5, 126, 3), 1.5);
    for (qreal x : {452, 482, 513, 544, 575}) {
        DrawLed(p, QRectF(x, 157, 15, 14), false);
    }
}

// Note keyboard: seven 74 x 60 octave pictures from (60, 220); the note-range
// slider lies over (60, 199) - (577, 209); the pitch-wheel picture, 43 x 69,
// at (17, 212); the bend bar is painted, and erased in black, on rows 290 ... 296.
void DrawKeyboardBed(QPainter& p) {
    DrawPlate(p, QRectF(6, 196, 588, 110));
    DrawWell(p, QRectF(57, 198, 523, 13), 2);
    DrawWell(p, QRectF(13, 210, 568, 75), 3);
    p.fillRect(QRectF(60, 213, 518, 7), QColor(0x3a, 0x12, 0x14));
    p.fillRect(QRectF(60, 218, 518, 2), QColor(0, 0, 0, 140));
    // A wide bend range throws the bar far from its key, so the strip runs the
    // whole width of the plate.
    DrawWell(p, QRectF(8, 288, 584, 10), 2);
    p.fillRect(Area(9, 290, 590, 296), Qt::black);
}

void DrawSkin(QPainter& p) {
    DrawBackground(p);
    DrawPlate(p, Area(6, 23, 187, 194));
    DrawPlate(p, Area(189, 23, 444, 194));
    DrawPlate(p, Area(446, 23, 594, 194));
    DrawScope(p);
    DrawBendRange(p);
    DrawSourceSelector(p);
    DrawNameFields(p);
    DrawTransportCaptions(p);
    DrawMeterSlots(p);
    DrawLogo(p);
    DrawTransposeSelector(p);
    DrawKeyboardBed(p);
}

} // namespace

void AddSkin(std::vector<Artwork>& out) {
    out.push_back({QStringLiteral("images/skin.png"), QSize(kWidth, kHeight), DrawSkin});
}

} // namespace art
