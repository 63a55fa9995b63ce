// A bargraph that shows a float someone else owns. Its timer polls the value every 40 ms
// and repaints only the band between the old and the new level. The lit image has three
// zones, red at the top, yellow in the middle and green at the bottom, whose boundaries sit
// at fixed decibel levels below full scale while the level itself moves linearly.
#pragma once

#include "Graf.h"

#include <QImage>
#include <QTimer>
#include <QWidget>

#include <atomic>

namespace vocato::ui {

class Vumeter : public QWidget {
    Q_OBJECT
public:
    static constexpr int kPollMs = 40;

    // `frame` is inclusive, in the parent's coordinates; `value` is not owned and is
    // written by any thread. GUI thread.
    Vumeter(QWidget* parent, const QRect& frame, const QString& label, float minValue,
            float maxValue, const std::atomic<float>* value);

    // Shows the level v. GUI thread.
    void DrawVumeter(float v);
    float Value2Pix(float v) const { return (v - minValue_) * barLength_ / valueRange_; }
    float dB2Pix(float dB) const;

    float GetLowValue() const { return lowValue_; }
    void SetLowValue(float dB) { lowValue_ = dB; }
    float GetMedianValue() const { return medianValue_; }
    void SetMedianValue(float dB) { medianValue_ = dB; }
    void ChangeLedDisplay(int on, bool redraw);
    void ChangeFadeDrawing(int on, bool redraw);

    // Zone boundaries in pixels from the top of the bar, as the last rebuild placed them.
    float MedianPixel() const { return medianPixel_; }
    float LowPixel() const { return lowPixel_; }
    float BarLength() const { return barLength_; }
    const QString& Label() const { return label_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void SetBargraph();
    float BoundaryPixel(float dB) const;
    void Periodic();

    QImage canvas_, litImage_;
    QTimer timer_;
    float lastValue_ = 2147483648.0f; // differs from any real first value
    float lastPolled_ = -1.0f;
    bool vertical_;
    PixRect barRect_;
    float barLength_ = 0, linearLength_ = 0, unitsPerPixel_ = 0, pixelsPerDecade_ = 0;
    float minValue_, maxValue_, valueRange_;
    const std::atomic<float>* value_;
    QString label_;
    float medianPixel_ = 0, lowPixel_ = 0;
    float medianValue_ = 6, lowValue_ = 30;
    bool ready_ = false;
    int fadeDrawing_ = 1;
    int ledDisplay_ = 0;
};

} // namespace vocato::ui
