#include "Vumeter.h"

#include <QPainter>

#include <cmath>

namespace vocato::ui {

namespace {

const QColor kRed(255, 31, 31);
const QColor kYellow(255, 255, 31);
const QColor kGreen(143, 255, 31);
const QColor kBlack(0, 0, 0);

// The bottom fifth of the bar is linear up to -40 dB below a 32-bit full scale.
constexpr float kLinearTop = 21474836.0f;
constexpr double kLog10LinearTop = 7.331929865583417; // log10(21474836.48)

} // namespace

Vumeter::Vumeter(QWidget* parent, const QRect& frame, const QString& label, float minValue,
                 float maxValue, const std::atomic<float>* value)
    : QWidget(parent),
      vertical_(frame.width() < frame.height()),
      minValue_(minValue),
      maxValue_(maxValue),
      valueRange_(maxValue - minValue),
      value_(value),
      label_(label.left(71)) {
    setObjectName(QStringLiteral("Vumeter"));
    setGeometry(frame);
    SetBargraph();
    connect(&timer_, &QTimer::timeout, this, &Vumeter::Periodic);
    timer_.start(kPollMs);
}

float Vumeter::dB2Pix(float dB) const {
    return Value2Pix(std::pow(10.0f, -std::fabs(dB) / 20.0f));
}

float Vumeter::BoundaryPixel(float dB) const {
    const float u = std::pow(10.0f, -dB / 20.0f) * 2147483647.0f;
    const float p = u <= kLinearTop
                        ? u / unitsPerPixel_
                        : static_cast<float>((std::log10(u) - kLog10LinearTop) * pixelsPerDecade_ +
                                             linearLength_);
    return vertical_ ? barLength_ - p : p;
}

void Vumeter::SetBargraph() {
    // Bounds are inclusive: an 11 x 101 widget has the bounds (0, 0) - (10, 100).
    const PixRect bounds{0, 0, float(width() - 1), float(height() - 1)};
    barRect_ = bounds.Inset(1, 1);
    const float barHeight = barRect_.bottom - barRect_.top;
    const float barWidth = barRect_.right - barRect_.left;
    if (barHeight < 1 || barWidth < 1) {
        ready_ = false;
        return;
    }
    ready_ = true;

    canvas_ = QImage(size(), QImage::Format_ARGB32_Premultiplied);
    canvas_.fill(Qt::transparent);
    barLength_ = vertical_ ? barHeight : barWidth;
    linearLength_ = barLength_ / 5;
    unitsPerPixel_ = kLinearTop / linearLength_;
    pixelsPerDecade_ = (barLength_ - linearLength_) * 0.5f;
    medianPixel_ = BoundaryPixel(medianValue_);
    lowPixel_ = BoundaryPixel(lowValue_);

    const float w = barRect_.right - barRect_.left;
    const float l = barRect_.left, t = barRect_.top, b = barRect_.bottom;
    {
        QPainter p(&canvas_);
        Graf graf(p);
        graf.Bottom3DRect(bounds);
        if (vertical_) {
            if (fadeDrawing_) {
                graf.MakeGradient({l, t, w, medianPixel_}, kRed, kYellow, true);
                graf.MakeGradient({l, medianPixel_, w, lowPixel_}, kYellow, kGreen, true);
            } else {
                graf.FillRect({l, t, w, medianPixel_}, kRed);
                graf.FillRect({l, medianPixel_, w, lowPixel_}, kYellow);
            }
            graf.FillRect({l, lowPixel_, w, b}, kGreen);
        } else {
            // A horizontal bar grows from the left: green, yellow, then red at the right.
            const float median = barLength_ - medianPixel_, low = barLength_ - lowPixel_;
            graf.FillRect({l, t, low, b}, kGreen);
            if (fadeDrawing_) {
                graf.MakeGradient({low, t, median, b}, kGreen, kYellow, false);
                graf.MakeGradient({median, t, barRect_.right, b}, kYellow, kRed, false);
            } else {
                graf.FillRect({low, t, median, b}, kYellow);
                graf.FillRect({median, t, barRect_.right, b}, kRed);
            }
        }
        if (ledDisplay_) {
            for (int i = 0; i < barLength_; i += 2) {
                if (vertical_) {
                    graf.StrokeLine(0, t + i, w, t + i, kBlack);
                } else {
                    graf.StrokeLine(l + i, 0, l + i, b, kBlack);
                }
            }
        }
    }
    litImage_ = canvas_.copy();
    {
        QPainter p(&canvas_);
        Graf graf(p);
        const float unlit = barLength_ - Value2Pix(lastValue_);
        if (vertical_) {
            graf.FillRect({0, t, barRect_.right, t + unlit}, kBlack);
        } else {
            graf.FillRect({barRect_.right - unlit, 0, barRect_.right, b}, kBlack);
        }
    }
    update();
}

void Vumeter::DrawVumeter(float v) {
    if (!ready_ || v == lastValue_) {
        return;
    }
    const float t = barRect_.top;
    const float yNew = barLength_ - Value2Pix(v);
    const float yOld = barLength_ - Value2Pix(lastValue_);
    QPainter p(&canvas_);
    Graf graf(p);
    // The band between the old and the new level is the only part that changes.
    PixRect band = vertical_ ? PixRect{0, t + std::min(yNew, yOld), barRect_.right, t + std::max(yNew, yOld)}
                             : PixRect{barRect_.right - std::max(yNew, yOld), 0,
                                       barRect_.right - std::min(yNew, yOld), barRect_.bottom};
    band.top = std::max(band.top, 0.0f);
    band.left = std::max(band.left, 0.0f);
    band.bottom = std::min(band.bottom, float(height() - 1));
    band.right = std::min(band.right, float(width() - 1));
    if (band.bottom >= band.top && band.right >= band.left) {
        if (v > lastValue_) {
            const QRect r = band.ToQRect();
            p.setCompositionMode(QPainter::CompositionMode_Source);
            p.drawImage(r.topLeft(), litImage_, r);
        } else {
            graf.FillRect(band, kBlack);
        }
    }
    lastValue_ = v;
    update();
}

void Vumeter::Periodic() {
    const float v = value_->load(std::memory_order_relaxed);
    if (v != lastPolled_) {
        lastPolled_ = v;
        DrawVumeter(v);
    }
}

void Vumeter::ChangeLedDisplay(int on, bool redraw) {
    ledDisplay_ = on;
    if (redraw) {
        SetBargraph();
    }
}

void Vumeter::ChangeFadeDrawing(int on, bool redraw) {
    fadeDrawing_ = on;
    if (redraw) {
        SetBargraph();
    }
}

void Vumeter::resizeEvent(QResizeEvent*) { SetBargraph(); }

void Vumeter::paintEvent(QPaintEvent*) {
    if (!ready_) {
        return;
    }
    QPainter p(this);
    p.drawImage(0, 0, canvas_);
}

} // namespace vocato::ui
