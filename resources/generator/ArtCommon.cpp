#include "Art.h"

#include <QLinearGradient>
#include <QPainterPath>
#include <QRadialGradient>

namespace art {

QFont Font(qreal pixelSize, QFont::Weight weight, bool italic) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(qRound(pixelSize));
    font.setWeight(weight);
    font.setItalic(italic);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

void DrawPlate(QPainter& p, const QRectF& r, qreal radius) {
    p.save();
    QLinearGradient fill(r.topLeft(), r.bottomLeft());
    fill.setColorAt(0, colour::plate.lighter(112));
    fill.setColorAt(1, colour::plate.darker(108));
    p.setPen(QPen(colour::plateEdge, 1));
    p.setBrush(fill);
    p.drawRoundedRect(r.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    // The light catches the top edge only, as on a panel lit from above.
    QLinearGradient rim(r.topLeft(), r.bottomLeft());
    rim.setColorAt(0, QColor(255, 255, 255, 40));
    rim.setColorAt(0.3, QColor(255, 255, 255, 0));
    p.setPen(QPen(QBrush(rim), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(r.adjusted(1.5, 1.5, -1.5, -1.5), radius - 1, radius - 1);
    p.restore();
}

void DrawWell(QPainter& p, const QRectF& r, qreal radius) {
    p.save();
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 22));
    p.drawRoundedRect(r.adjusted(-1, -1, 1, 1.5), radius + 1, radius + 1);
    p.setBrush(colour::well);
    p.drawRoundedRect(r, radius, radius);
    QLinearGradient shade(r.topLeft(), r.topLeft() + QPointF(0, 4));
    shade.setColorAt(0, QColor(0, 0, 0, 160));
    shade.setColorAt(1, QColor(0, 0, 0, 0));
    p.setBrush(shade);
    p.drawRoundedRect(r, radius, radius);
    p.restore();
}

void DrawLcd(QPainter& p, const QRectF& r) {
    p.save();
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 28));
    p.drawRoundedRect(r.adjusted(-1, -1, 1, 1.5), 3, 3);
    p.setBrush(QColor(0x08, 0x0a, 0x0c));
    p.drawRoundedRect(r, 3, 3);
    QRectF glass = r.adjusted(1.5, 1.5, -1.5, -1.5);
    QLinearGradient fill(glass.topLeft(), glass.bottomLeft());
    fill.setColorAt(0, colour::lcdTop);
    fill.setColorAt(1, colour::lcdBottom);
    p.setBrush(fill);
    p.drawRoundedRect(glass, 2, 2);
    QLinearGradient shadow(glass.topLeft(), glass.topLeft() + QPointF(0, 3.5));
    shadow.setColorAt(0, QColor(0, 0, 0, 70));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    p.setBrush(shadow);
    p.drawRoundedRect(glass, 2, 2);
    p.restore();
}

void DrawLed(QPainter& p, const QRectF& r, bool lit) {
    p.save();
    p.setPen(Qt::NoPen);
    QPointF c = r.center();
    qreal radius = std::min(r.width(), r.height()) / 2;
    if (lit) {
        QRadialGradient halo(c, radius);
        halo.setColorAt(0, QColor(255, 190, 80, 140));
        halo.setColorAt(1, QColor(255, 150, 40, 0));
        p.setBrush(halo);
        p.drawEllipse(c, radius, radius);
    }
    qreal lens = radius - 2;
    p.setBrush(QColor(0, 0, 0, 200));
    p.drawEllipse(c, lens + 1, lens + 1);
    QRadialGradient glow(c - QPointF(lens * 0.3, lens * 0.35), lens * 1.4);
    if (lit) {
        glow.setColorAt(0, QColor(255, 250, 215));
        glow.setColorAt(0.35, colour::amber);
        glow.setColorAt(1, colour::amberDeep);
    } else {
        glow.setColorAt(0, colour::ledOff.lighter(150));
        glow.setColorAt(1, colour::ledOff.darker(160));
    }
    p.setBrush(glow);
    p.drawEllipse(c, lens, lens);
    p.setBrush(QColor(255, 255, 255, lit ? 170 : 60));
    p.drawEllipse(c - QPointF(lens * 0.35, lens * 0.4), lens * 0.32, lens * 0.24);
    p.restore();
}

void DrawCaption(QPainter& p, const QPointF& baseline, const QString& text, Qt::Alignment align,
                 qreal size) {
    p.save();
    QFont font = Font(size, QFont::Bold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.8);
    p.setFont(font);
    qreal width = QFontMetricsF(font).horizontalAdvance(text);
    QPointF at = baseline;
    if (align & Qt::AlignRight) {
        at.rx() -= width;
    } else if (align & Qt::AlignHCenter) {
        at.rx() -= width / 2;
    }
    p.setPen(QColor(0, 0, 0, 150));
    p.drawText(at + QPointF(0, 1), text);
    p.setPen(colour::engraving);
    p.drawText(at, text);
    p.restore();
}

} // namespace art
