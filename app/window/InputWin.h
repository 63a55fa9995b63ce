// The Input button's window: what can be adjusted of the sound that reaches the converter.
// Under JACK, which capture ports feed Vocato's input; with ALSA, the mixer of the card behind
// the capture device; in both cases a meter of the input's level. Without a live input, or
// with a capture device that has no card of its own, the window says so.
//
// GUI thread only.
#pragma once

#include "ParameterWeb.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class QLabel;
class QProgressBar;

namespace vocato {

namespace app {
class LiveAudio;
}
namespace ui {
class ParameterWebView;
}

class InputWin final : public QWidget {
    Q_OBJECT
public:
    static constexpr int kMeterMs = 40;

    // `audio` outlives the window (the main window closes it first). Shows itself; deletes
    // itself when closed.
    explicit InputWin(app::LiveAudio& audio, QWidget* parent = nullptr);

    // Null when there is nothing to adjust.
    ui::ParameterWebView* View() const { return view_; }
    // The sentence shown instead of controls; null when there are controls.
    QLabel* Notice() const { return notice_; }
    // The meter: the input's peak over the last moments, in dB below full scale.
    QProgressBar* Meter() const { return meter_; }

private:
    void Poll();

    app::LiveAudio& audio_;
    std::unique_ptr<media::ParameterWeb> web_;
    ui::ParameterWebView* view_ = nullptr;
    QLabel* notice_ = nullptr;
    QProgressBar* meter_ = nullptr;
    QTimer meterTimer_;
};

} // namespace vocato
