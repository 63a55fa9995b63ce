// Two thumbs that select a range of MIDI notes over the keyboard of the note display, with
// the same key geometry so that each thumb sits over the key of its note. The values live
// with the caller; the slider writes them while dragging and reports on release.
#pragma once

#include "Graf.h"

#include <QWidget>

namespace vocato::ui {

class DoubleSlider : public QWidget {
    Q_OBJECT
public:
    // `frame` is inclusive, in the parent's coordinates. `low` and `high` are owned by the
    // caller and read and written on the GUI thread. A `maxSpan` of 0 means the whole range.
    DoubleSlider(QWidget* parent, const QRect& frame, float* low, float* high, float minimum,
                 float maximum, float maxSpan);

    // x of the key of `note`, 0 being the left edge of note 24's octave.
    static float GetPixel(float note);
    // The note under x, the inverse of the key geometry.
    static int NoteAt(int x);

    PixRect LowThumb() const { return lowThumb_; }
    PixRect HighThumb() const { return highThumb_; }

signals:
    // The mouse button was released after a click on a thumb; the values are in place.
    void Released();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void Track(float x);
    void ComputeThumbs();

    float* low_;
    float* high_;
    float maxSpan_;
    PixRect lowThumb_, highThumb_;
    // The drag in progress: the value that moves, the other one, the allowed x range.
    float* moving_ = nullptr;
    float other_ = 0, minX_ = 0, maxX_ = 0, lastX_ = 0;
};

} // namespace vocato::ui
