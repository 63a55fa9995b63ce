#include "Graf.h"

#include <QPolygon>

#include <algorithm>
#include <cmath>

namespace vocato::ui {

namespace {

int Px(float v) { return static_cast<int>(std::lround(v)); }

// The panel's colours are painted as they are: the bevel colours carry alpha 0 in the
// artwork's tables, yet they are meant to be seen, so the bevel ignores alpha.
QColor Opaque(QColor c) {
    c.setAlpha(255);
    return c;
}

const QColor kLight(255, 255, 255);
const QColor kDark(128, 128, 128);

} // namespace

QRect PixRect::ToQRect() const { return QRect(QPoint(Px(left), Px(top)), QPoint(Px(right), Px(bottom))); }

void Graf::StrokeLine(float x0, float y0, float x1, float y1, QColor colour) {
    p_.save();
    p_.setRenderHint(QPainter::Antialiasing, false);
    p_.setPen(QPen(colour, 0));
    p_.drawLine(QPoint(Px(x0), Px(y0)), QPoint(Px(x1), Px(y1)));
    p_.restore();
}

void Graf::FillRect(const PixRect& r, QColor colour) {
    if (r.right < r.left || r.bottom < r.top) {
        return;
    }
    p_.fillRect(r.ToQRect(), colour);
}

void Graf::Rect3D(const PixRect& r, bool raised) {
    const QColor first = Opaque(raised ? kLight : kDark);
    const QColor second = Opaque(raised ? kDark : kLight);
    StrokeLine(r.right, r.top, r.left, r.top, first);
    StrokeLine(r.left, r.top, r.left, r.bottom, first);
    StrokeLine(r.left, r.bottom, r.right, r.bottom, second);
    StrokeLine(r.right, r.bottom, r.right, r.top, second);
}

void Graf::Nested(PixRect r, float depth, bool raised) {
    // Only whole positive depths end the loop; anything else draws one bevel.
    if (depth < 1.0f || depth != std::floor(depth)) {
        depth = 1.0f;
    }
    do {
        Rect3D(r, raised);
        r = r.Inset(1, 1);
        depth -= 1.0f;
    } while (depth != 0.0f);
}

void Graf::MakeGradient(const PixRect& r, QColor from, QColor to, bool vertical) {
    p_.save();
    p_.setCompositionMode(QPainter::CompositionMode_Source);
    FillRect(r, from);
    p_.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const float h = r.bottom - r.top;
    const float w = r.right - r.left;
    const float span = vertical ? h : w;
    for (int i = 0; i <= span; ++i) {
        QColor c = to;
        // Truncation toward zero keeps the last line fully opaque and the first clear.
        c.setAlpha(static_cast<int>(static_cast<float>(i) / span * 255.0f));
        if (vertical) {
            StrokeLine(r.left, r.top + i, r.left + w, r.top + i, c);
        } else {
            StrokeLine(r.left + i, r.top, r.left + i, r.top + h, c);
        }
    }
    p_.restore();
}

void Graf::TriangleDown(const PixRect& r, QColor fill, QColor outline) {
    const QPolygon triangle({QPoint(Px(r.left), Px(r.top)), QPoint(Px(r.right), Px(r.top)),
                             QPoint(Px(r.left + (r.right - r.left) * 0.5f), Px(r.bottom))});
    p_.save();
    p_.setRenderHint(QPainter::Antialiasing, false);
    p_.setPen(QPen(outline, 0));
    p_.setBrush(fill);
    p_.drawPolygon(triangle);
    p_.restore();
}

QFont Graf::PanelFont(const char* family, uint16_t face, float size) {
    QFont font;
    // The panel names fonts of another platform; a bold serif is the nearest look here.
    font.setFamilies({QString::fromUtf8(family), QStringLiteral("DejaVu Serif")});
    font.setBold((face & kBoldFace) != 0);
    font.setItalic((face & kItalicFace) != 0);
    font.setPixelSize(std::max(1, Px(size)));
    return font;
}

void Graf::ShadowText(float x, float y, const QString& text, QColor first, QColor second,
                      const char* family, uint16_t face, float size, float rotation) {
    const QFont saved = p_.font();
    p_.setFont(PanelFont(family, face, size));
    for (int pass = 0; pass < 2; ++pass) {
        p_.save();
        p_.translate(x + pass, y);
        p_.rotate(-rotation);
        p_.setPen(pass == 0 ? first : second);
        p_.drawText(QPointF(0, 0), text);
        p_.restore();
    }
    p_.setPen(second);
    p_.setFont(saved);
}

} // namespace vocato::ui
