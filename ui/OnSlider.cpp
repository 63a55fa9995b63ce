#include "OnSlider.h"

#include <QMouseEvent>

namespace vocato::ui {

OnSlider::OnSlider(QWidget* parent, const QRect& frame, float value, [[maybe_unused]] float minimum,
                   float maximum, const QImage& background, const QImage& thumb)
    : QWidget(parent),
      thumb_(thumb),
      background_(background),
      frameInParent_(frame),
      maximum_(maximum),
      // Widths are measured between inclusive bounds: a 15-pixel thumb is 14 wide.
      thumbWidth_(float(thumb.width() - 1)),
      halfThumb_(thumbWidth_ * 0.5f),
      trackLength_(float(frame.width() - 1) - thumbWidth_),
      value_(value) {
    setObjectName(QStringLiteral("MySlider"));
    setGeometry(frame);
}

PixRect OnSlider::GetThumb(float v) const {
    const float left = GetPixel(v) + halfThumb_ - thumbWidth_ * 0.5f;
    return {left, 0, left + thumbWidth_, float(thumb_.height() - 1)};
}

void OnSlider::SetValue(float v) {
    if (v == value_) {
        return;
    }
    update(GetThumb(value_).ToQRect());
    value_ = v;
    update(GetThumb(v).ToQRect());
}

void OnSlider::paintEvent(QPaintEvent*) {
    QPainter p(this);
    if (!background_.isNull()) {
        p.drawImage(QPoint(0, 0), background_, frameInParent_);
    }
    const QRect thumbRect = GetThumb(value_).ToQRect();
    p.drawImage(thumbRect.topLeft(), thumb_);
}

void OnSlider::mousePressEvent(QMouseEvent* event) {
    lastX_ = 0;
    Track(event->position().x());
}

void OnSlider::mouseMoveEvent(QMouseEvent* event) { Track(event->position().x()); }

void OnSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->buttons() == Qt::NoButton) {
        emit Released(value_);
    }
}

void OnSlider::Track(float x) {
    // Outside the track the value stays as it was.
    if (x == lastX_ || x < halfThumb_ || x > trackLength_ + halfThumb_) {
        return;
    }
    update(GetThumb(value_).ToQRect());
    value_ = (x - halfThumb_) * maximum_ / trackLength_;
    update(GetThumb(value_).ToQRect());
    lastX_ = x;
}

} // namespace vocato::ui
