// The recurring decorations of the front panel: bevels, gradients, triangle thumbs and
// two-pass shadow text. Coordinates are inclusive pixel rectangles, as the panel's
// layout gives them: (0, 0) - (10, 100) covers 11 x 101 pixels.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

#include <cstdint>

namespace vocato::ui {

// Font faces, combinable: bold + italic is 33.
enum FontFace : uint16_t { kItalicFace = 0x01, kBoldFace = 0x20 };

// An inclusive rectangle with float bounds, like the layout's.
struct PixRect {
    float left = 0, top = 0, right = 0, bottom = 0;
    PixRect Inset(float dx, float dy) const { return {left + dx, top + dy, right - dx, bottom - dy}; }
    // The pixels it covers, each bound rounded to the nearest pixel.
    QRect ToQRect() const;
};

// Bound to a painter for one painting session; leaves the pen as each operation says.
class Graf {
public:
    explicit Graf(QPainter& painter) : p_(painter) {}

    void Rect3D(const PixRect& r, bool raised);
    void Top3DRect(const PixRect& r) { Rect3D(r, true); }
    void Top3DRect(const PixRect& r, float depth) { Nested(r, depth, true); }
    void Bottom3DRect(const PixRect& r) { Rect3D(r, false); }
    void Bottom3DRect(const PixRect& r, float depth) { Nested(r, depth, false); }

    // `from` at the top (or left) edge blending into `to` at the bottom (or right) edge.
    void MakeGradient(const PixRect& r, QColor from, QColor to, bool vertical);
    void TriangleDown(const PixRect& r, QColor fill, QColor outline);
    // `text` in `first` at (x, y), then in `second` one pixel to the right; (x, y) is the
    // baseline origin and `rotation` turns the text counter-clockwise, in degrees.
    void ShadowText(float x, float y, const QString& text, QColor first, QColor second,
                    const char* family, uint16_t face, float size, float rotation);

    // A one-pixel line between two pixel centres, both ends included.
    void StrokeLine(float x0, float y0, float x1, float y1, QColor colour);
    void FillRect(const PixRect& r, QColor colour);

    // The font that `family`, `face` and `size` name, with the nearest installed family.
    static QFont PanelFont(const char* family, uint16_t face, float size);

private:
    void Nested(PixRect r, float depth, bool raised);
    QPainter& p_;
};

} // namespace vocato::ui
