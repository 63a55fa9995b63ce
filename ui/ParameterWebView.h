// The one view every control panel uses: it draws any parameter web as labelled groups of
// controls (a slider with a number for a continuous value, a menu for a discrete one, a check
// box for a switch), hands the user's changes to the web and shows changes made elsewhere (a
// preset that rewrites the node's values, a mixer moved by another program) by reading the
// web on a timer.
//
// GUI thread only.
#pragma once

#include "ParameterWeb.h"

#include <QTimer>

class QSlider;
#include <QWidget>

#include <vector>

namespace vocato::ui {

class ParameterWebView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kPollMs = 100;

    // `web` outlives the view.
    explicit ParameterWebView(media::ParameterWeb& web, QWidget* parent = nullptr);

    // Reads every value and shows those that changed since the last reading; the timer calls
    // it every kPollMs.
    void Refresh();

    // The control that stands for the parameter: a QDoubleSpinBox (its slider is named after
    // it with "-slider"), a QComboBox or a QCheckBox; null for an unknown id.
    QWidget* ControlFor(int32_t id) const;

private:
    struct Control {
        const media::Parameter* parameter;
        QWidget* widget;
        QSlider* slider = nullptr; // beside a continuous value's number
        float shown = 0.0f;
        bool known = false;
    };

    QWidget* MakeControl(const media::Parameter& parameter);
    QWidget* MakeContinuous(const media::Parameter& parameter);
    QWidget* MakeDiscrete(const media::Parameter& parameter);
    QWidget* MakeSwitch(const media::Parameter& parameter);
    void Show(const Control& control, float value);

    media::ParameterWeb& web_;
    std::vector<Control> controls_;
    QTimer poll_;
};

// The object name of the control that stands for a parameter: "parameter-<id>".
QString ControlName(int32_t id);

} // namespace vocato::ui
