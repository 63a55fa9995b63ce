#include "Art.h"

#include <QLinearGradient>

#include <algorithm>
#include <cmath>

// The pitch-bend wheel in 32 positions, 43 x 69 each: "m16" at rest, higher
// numbers turned further up. The wheel is a ribbed cylinder seen from the
// front; its amber index line shows the turn, a white notch on the housing
// shows where rest is.
namespace art {

namespace {

constexpr qreal kWidth = 43;
constexpr qreal kHeight = 69;
constexpr qreal kPi = 3.14159265358979323846;
// Frame 0 and frame 31 sit this far either side of rest.
constexpr qreal kMaxTurn = 50 * kPi / 180;

void DrawHousing(QPainter& p, const QRectF& slot) {
    QLinearGradient body(0, 0, 0, kHeight);
    body.setColorAt(0, QColor(0x3a, 0x3f, 0x48));
    body.setColorAt(1, QColor(0x22, 0x25, 0x2b));
    p.setPen(QPen(QColor(0x0a, 0x0b, 0x0d), 1));
    p.setBrush(body);
    p.drawRoundedRect(QRectF(0.5, 0.5, kWidth - 1, kHeight - 1), 4, 4);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::black);
    p.drawRoundedRect(slot.adjusted(-1.5, -1.5, 1.5, 1.5), 3, 3);
    // Rest notches beside the slot.
    p.setBrush(QColor(0xe8, 0xea, 0xee));
    qreal y = kHeight / 2;
    p.drawRect(QRectF(2.5, y - 0.75, 4.5, 1.5));
    p.drawRect(QRectF(kWidth - 7, y - 0.75, 4.5, 1.5));
}

void DrawWheel(QPainter& p, int frame) {
    QRectF slot(10, 5, 23, kHeight - 10);
    DrawHousing(p, slot);

    // Shading of a cylinder lit from the front.
    QLinearGradient drum(slot.topLeft(), slot.bottomLeft());
    drum.setColorAt(0, QColor(0x0a, 0x0b, 0x0d));
    drum.setColorAt(0.5, QColor(0x6a, 0x70, 0x7a));
    drum.setColorAt(1, QColor(0x0a, 0x0b, 0x0d));
    p.setBrush(drum);
    p.drawRect(slot);

    qreal radius = slot.height() / 2;
    qreal centre = slot.center().y();
    qreal turn = (frame - 16) / 16.0 * kMaxTurn;
    // Ribs every 12 degrees around the drum; only the front half is seen.
    for (int rib = -15; rib <= 15; ++rib) {
        qreal angle = rib * 12 * kPi / 180 + turn;
        if (std::abs(angle) >= kPi / 2 - 0.05) {
            continue;
        }
        qreal y = centre - radius * std::sin(angle);
        qreal facing = std::cos(angle);
        p.setBrush(QColor(0, 0, 0, int(150 * facing)));
        p.drawRect(QRectF(slot.left(), y - 0.6 * facing, slot.width(), 1.2 * facing));
        p.setBrush(QColor(255, 255, 255, int(40 * facing)));
        p.drawRect(QRectF(slot.left(), y + 0.6 * facing, slot.width(), 0.6 * facing));
    }
    // Rounding of the drum towards its sides.
    QLinearGradient sheen(slot.topLeft(), slot.topRight());
    sheen.setColorAt(0, QColor(0, 0, 0, 90));
    sheen.setColorAt(0.35, QColor(255, 255, 255, 18));
    sheen.setColorAt(1, QColor(0, 0, 0, 110));
    p.setBrush(sheen);
    p.drawRect(slot);

    // The index line is painted on, so it stays bright wherever the drum is dark.
    qreal y = centre - radius * std::sin(turn);
    qreal height = std::max(1.6, 3.2 * std::cos(turn));
    p.setBrush(colour::amber);
    p.drawRect(QRectF(slot.left() + 1, y - height / 2, slot.width() - 2, height));
}

} // namespace

void AddBendWheel(std::vector<Artwork>& out) {
    for (int frame = 0; frame < 32; ++frame) {
        out.push_back({QStringLiteral("images/m%1.png").arg(frame), QSize(43, 69),
                       [frame](QPainter& p) { DrawWheel(p, frame); }});
    }
}

} // namespace art
