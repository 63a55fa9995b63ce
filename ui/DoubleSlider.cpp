#include "DoubleSlider.h"

#include "NotePos.h"

#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace vocato::ui {

namespace {

// The keyboard below covers notes 24 ... 107; a stored value outside it (from an edited
// settings file) is drawn at the nearest end instead of indexing outside the key table.
constexpr float kLowestNote = 24.0f;
constexpr float kHighestNote = 107.0f;

} // namespace

DoubleSlider::DoubleSlider(QWidget* parent, const QRect& frame, float* low, float* high,
                           float minimum, float maximum, float maxSpan)
    : QWidget(parent), low_(low), high_(high), maxSpan_(maxSpan != 0 ? maxSpan : maximum - minimum) {
    setObjectName(QStringLiteral("DoubleSlider"));
    setGeometry(frame);
    ComputeThumbs();
}

float DoubleSlider::GetPixel(float note) {
    const float n = std::clamp(note, kLowestNote, kHighestNote) - kLowestNote;
    return std::floor(n / 12.0f) * kOctaveWidth + NotePos[static_cast<int>(n) % 12];
}

int DoubleSlider::NoteAt(int x) {
    return 24 + 12 * (x / kOctaveWidth) + static_cast<int>((x % kOctaveWidth) / 6.16);
}

void DoubleSlider::ComputeThumbs() {
    const PixRect r = PixRect{0, 0, float(width() - 1), float(height() - 1)}.Inset(1, 1);
    const float x1 = GetPixel(*low_), x2 = GetPixel(*high_);
    lowThumb_ = {x1 - 4, r.top, x1 + 4, r.bottom};
    highThumb_ = {x2 - 4, r.top, x2 + 4, r.bottom};
}

void DoubleSlider::paintEvent(QPaintEvent*) {
    QPainter p(this);
    Graf graf(p);
    const PixRect bounds{0, 0, float(width() - 1), float(height() - 1)};
    graf.Bottom3DRect(bounds, 1.0f);
    const PixRect r = bounds.Inset(1, 1);
    graf.FillRect(r, QColor(184, 184, 184, 128));
    graf.FillRect({GetPixel(*low_), r.top, GetPixel(*high_), r.bottom}, QColor(102, 152, 203, 128));
    ComputeThumbs();
    graf.TriangleDown(lowThumb_, QColor(143, 255, 31), QColor(80, 80, 80));
    graf.TriangleDown(highThumb_, QColor(255, 31, 31), QColor(80, 80, 80));
}

static bool Contains(const PixRect& r, QPointF pt) {
    return pt.x() >= r.left && pt.x() <= r.right && pt.y() >= r.top && pt.y() <= r.bottom;
}

void DoubleSlider::mousePressEvent(QMouseEvent* event) {
    ComputeThumbs();
    const QPointF where = event->position();
    if (Contains(lowThumb_, where)) {
        moving_ = low_;
        other_ = *high_;
        minX_ = 0;
        maxX_ = highThumb_.left;
    } else if (Contains(highThumb_, where)) {
        moving_ = high_;
        other_ = *low_;
        minX_ = lowThumb_.right;
        maxX_ = float(width() - 1);
    } else {
        moving_ = nullptr;
        return;
    }
    lastX_ = 0;
    Track(where.x());
}

void DoubleSlider::mouseMoveEvent(QMouseEvent* event) {
    if (moving_) {
        Track(event->position().x());
    }
}

void DoubleSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (moving_ && event->buttons() == Qt::NoButton) {
        moving_ = nullptr;
        emit Released();
    }
}

void DoubleSlider::Track(float x) {
    x = std::clamp(x, minX_, maxX_);
    if (x == lastX_) {
        return;
    }
    const int note = NoteAt(static_cast<int>(x));
    // A span of maxSpan or more is refused: the thumb stays at its last accepted note.
    if (std::fabs(note - other_) < maxSpan_) {
        *moving_ = static_cast<float>(note);
        lastX_ = x;
        update();
    }
}

} // namespace vocato::ui
