// One value set by dragging a picture thumb along a track painted from the skin.
#pragma once

#include "Graf.h"

#include <QImage>
#include <QWidget>

namespace vocato::ui {

class OnSlider : public QWidget {
    Q_OBJECT
public:
    // `frame` is inclusive, in the parent's coordinates; the range starts at 0 whatever
    // `minimum` says. `background` is the image whose
    // rectangle `frame` lies behind the track (the skin), null for none. GUI thread.
    OnSlider(QWidget* parent, const QRect& frame, float value, float minimum, float maximum,
             const QImage& background, const QImage& thumb);

    float GetPixel(float v) const { return trackLength_ * v / maximum_; }
    // Where the thumb stands for v, in the slider's coordinates (inclusive).
    PixRect GetThumb(float v) const;
    // Moves the thumb without reporting anything. GUI thread.
    void SetValue(float v);
    float Value() const { return value_; }

signals:
    // The mouse button was released; `value` is the slider's value.
    void Released(float value);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void Track(float x);

    QImage thumb_;
    QImage background_;
    QRect frameInParent_;
    float maximum_;
    float thumbWidth_, halfThumb_, trackLength_;
    float value_;
    float lastX_ = 0;
};

} // namespace vocato::ui
