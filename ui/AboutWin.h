// The about picture, as the start-up splash (no border, no scrolling, ignores input) or as
// the about box (a 48-pixel strip below the picture where the credits scroll upward one
// pixel every 100 ms; any key or click closes it).
#pragma once

#include "Artwork.h"

#include <QImage>
#include <QTimer>
#include <QWidget>

namespace vocato::ui {

class AboutView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kStripHeight = 48;
    static constexpr int kPulseMs = 100;

    AboutView(QWidget* parent, const QImage& about, const QImage& scroll, bool splash);

    // Advances the scrolling strip by one row (about box only). GUI thread.
    void Pulse();
    float ScrollOffset() const { return scrollOffset_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool splash_;
    QImage about_;
    QImage scroll_;
    QImage strip_;
    float scrollOffset_ = 0;
    QTimer pulse_;
};

class AboutWin : public QWidget {
    Q_OBJECT
public:
    // Builds, sizes and shows the window; it deletes itself when it closes. GUI thread.
    AboutWin(const Artwork& artwork, bool splash);

    AboutView* View() const { return view_; }
    bool IsSplash() const { return splash_; }

private:
    bool splash_;
    AboutView* view_;
};

} // namespace vocato::ui
