#pragma once

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QSize>
#include <QString>

#include <functional>
#include <vector>

// Everything the front panel shows is drawn here, in logical pixels; the
// generator renders each picture at 1x and 2x from the same code.
namespace art {

struct Artwork {
    QString file; // relative to the resources folder, without the "@2x" suffix
    QSize size;   // logical size
    std::function<void(QPainter&)> draw;
};

void AddSkin(std::vector<Artwork>& out);
void AddKeyboardOctaves(std::vector<Artwork>& out);
void AddBendWheel(std::vector<Artwork>& out);
void AddIndicatorAndFader(std::vector<Artwork>& out);
void AddAboutPictures(std::vector<Artwork>& out);
void AddButtonFaces(std::vector<Artwork>& out);

// The panel's colours: graphite plates, recessed black wells, pale LCDs that
// carry black text, one warm amber for everything that lights up.
namespace colour {
inline const QColor panelTop{0x2f, 0x34, 0x3c};
inline const QColor panelBottom{0x1b, 0x1e, 0x23};
inline const QColor plate{0x2a, 0x2f, 0x37};
inline const QColor plateEdge{0x12, 0x14, 0x18};
inline const QColor well{0x0c, 0x0e, 0x11};
inline const QColor engraving{0x9a, 0xa4, 0xb2};
inline const QColor lcdTop{0xe2, 0xea, 0xd0};
inline const QColor lcdBottom{0xc4, 0xd1, 0xa8};
inline const QColor amber{0xff, 0xb3, 0x3c};
inline const QColor amberDeep{0xe0, 0x6a, 0x10};
inline const QColor ledOff{0x3b, 0x30, 0x24};
inline const QColor labelYellow{255, 255, 151};
} // namespace colour

QFont Font(qreal pixelSize, QFont::Weight weight, bool italic = false);

// A raised graphite plate with a bevel, holding one group of controls.
void DrawPlate(QPainter& p, const QRectF& r, qreal radius = 6);
// A recessed black area (screens, meter slots, the keyboard bed).
void DrawWell(QPainter& p, const QRectF& r, qreal radius = 3);
// A pale liquid-crystal field for black text.
void DrawLcd(QPainter& p, const QRectF& r);
// A round lamp lens, dark or glowing amber.
void DrawLed(QPainter& p, const QRectF& r, bool lit);
// Small upper-case lettering engraved into a plate.
void DrawCaption(QPainter& p, const QPointF& baseline, const QString& text,
                 Qt::Alignment align = Qt::AlignLeft, qreal size = 7.5);

} // namespace art
