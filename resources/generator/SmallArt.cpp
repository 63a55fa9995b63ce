#include "Art.h"

#include <QLinearGradient>

// The lit lamp "On" (15 x 14), drawn over the dark lamps of the skin at the
// very same places, and the bend-range slider's thumb "fader" (15 x 27), whose
// centre column 7 marks the value.
namespace art {

namespace {

void DrawFader(QPainter& p) {
    QRectF body(0.5, 0.5, 14, 26);
    p.setPen(QPen(QColor(0x08, 0x09, 0x0b), 1));
    QLinearGradient metal(body.topLeft(), body.topRight());
    metal.setColorAt(0, QColor(0x4a, 0x50, 0x5a));
    metal.setColorAt(0.45, QColor(0x8a, 0x92, 0x9e));
    metal.setColorAt(1, QColor(0x33, 0x37, 0x3e));
    p.setBrush(metal);
    p.drawRoundedRect(body, 2.5, 2.5);
    p.setPen(Qt::NoPen);
    for (qreal y : {4.0, 7.0, 18.0, 21.0}) {
        p.fillRect(QRectF(2, y, 11, 1), QColor(0, 0, 0, 90));
        p.fillRect(QRectF(2, y + 1, 11, 0.8), QColor(255, 255, 255, 50));
    }
    p.fillRect(QRectF(7, 2, 1, 23), colour::amber);
    p.fillRect(QRectF(6, 11, 3, 5), colour::amber);
}

} // namespace

void AddIndicatorAndFader(std::vector<Artwork>& out) {
    out.push_back({QStringLiteral("images/On.png"), QSize(15, 14),
                   [](QPainter& p) { DrawLed(p, QRectF(0, 0, 15, 14), true); }});
    out.push_back({QStringLiteral("images/fader.png"), QSize(15, 27), DrawFader});
}

} // namespace art
