#include "ParameterWebView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace vocato::ui {

namespace {

using media::Parameter;
using media::ParameterKind;

// A continuous value without a step still moves in fine, even steps on its slider.
constexpr int kFreeTicks = 1000;

int Ticks(const Parameter& p) {
    if (p.step <= 0.0f || p.maximum <= p.minimum) {
        return kFreeTicks;
    }
    return std::max(1, static_cast<int>(std::lround((p.maximum - p.minimum) / p.step)));
}

int TickOf(const Parameter& p, double value) {
    const double span = p.maximum - p.minimum;
    return span <= 0 ? 0 : static_cast<int>(std::lround((value - p.minimum) / span * Ticks(p)));
}

double ValueOfTick(const Parameter& p, int tick) {
    return p.minimum + (p.maximum - p.minimum) * tick / Ticks(p);
}

int Decimals(const Parameter& p) {
    if (p.step >= 1.0f) {
        return 0;
    }
    return p.step >= 0.1f ? 1 : 2;
}

} // namespace

QString ControlName(int32_t id) {
    return QStringLiteral("parameter-%1").arg(id);
}

ParameterWebView::ParameterWebView(media::ParameterWeb& web, QWidget* parent)
    : QWidget(parent), web_(web) {
    auto* layout = new QVBoxLayout(this);
    if (web.ParameterCount() == 0) {
        layout->addWidget(new QLabel(QStringLiteral("This has no controls."), this));
    }
    for (const media::ParameterGroup& group : web.Groups()) {
        auto* box = new QGroupBox(QString::fromStdString(group.name), this);
        auto* form = new QFormLayout(box);
        for (const Parameter& parameter : group.parameters) {
            form->addRow(QString::fromStdString(parameter.name), MakeControl(parameter));
            // Screen readers (and tests) find a control by its parameter's name.
            controls_.back().widget->setAccessibleName(QString::fromStdString(parameter.name));
        }
        layout->addWidget(box);
    }
    layout->addStretch();
    Refresh();
    connect(&poll_, &QTimer::timeout, this, &ParameterWebView::Refresh);
    poll_.start(kPollMs);
}

QWidget* ParameterWebView::MakeControl(const Parameter& parameter) {
    switch (parameter.kind) {
    case ParameterKind::Continuous:
        return MakeContinuous(parameter);
    case ParameterKind::Discrete:
        return MakeDiscrete(parameter);
    case ParameterKind::Switch:
        break;
    }
    return MakeSwitch(parameter);
}

QWidget* ParameterWebView::MakeContinuous(const Parameter& parameter) {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* slider = new QSlider(Qt::Horizontal, row);
    slider->setObjectName(ControlName(parameter.id) + "-slider");
    slider->setRange(0, Ticks(parameter));
    slider->setMinimumWidth(160);
    auto* spin = new QDoubleSpinBox(row);
    spin->setObjectName(ControlName(parameter.id));
    spin->setDecimals(Decimals(parameter));
    spin->setRange(parameter.minimum, parameter.maximum);
    spin->setSingleStep(parameter.step > 0 ? parameter.step
                                           : (parameter.maximum - parameter.minimum) / 100);
    if (!parameter.unit.empty()) {
        spin->setSuffix(" " + QString::fromStdString(parameter.unit));
    }
    layout->addWidget(slider, 1);
    layout->addWidget(spin);

    const int32_t id = parameter.id;
    connect(slider, &QSlider::valueChanged, spin,
            [spin, &parameter](int tick) { spin->setValue(ValueOfTick(parameter, tick)); });
    connect(spin, &QDoubleSpinBox::valueChanged, this, [this, slider, id, &parameter](double v) {
        const QSignalBlocker quiet(slider);
        slider->setValue(TickOf(parameter, v));
        web_.SetValue(id, static_cast<float>(v));
    });
    controls_.push_back({&parameter, spin, slider});
    return row;
}

QWidget* ParameterWebView::MakeDiscrete(const Parameter& parameter) {
    auto* menu = new QComboBox(this);
    menu->setObjectName(ControlName(parameter.id));
    for (const media::ParameterItem& item : parameter.items) {
        menu->addItem(QString::fromStdString(item.name), item.value);
    }
    const int32_t id = parameter.id;
    connect(menu, &QComboBox::activated, this, [this, menu, id](int index) {
        web_.SetValue(id, static_cast<float>(menu->itemData(index).toInt()));
    });
    controls_.push_back({&parameter, menu});
    return menu;
}

QWidget* ParameterWebView::MakeSwitch(const Parameter& parameter) {
    auto* box = new QCheckBox(this);
    box->setObjectName(ControlName(parameter.id));
    const int32_t id = parameter.id;
    connect(box, &QCheckBox::clicked, this,
            [this, id](bool on) { web_.SetValue(id, on ? 1.0f : 0.0f); });
    controls_.push_back({&parameter, box});
    return box;
}

void ParameterWebView::Refresh() {
    for (Control& control : controls_) {
        float value = 0.0f;
        // Only a change on the web's side moves a control: the user's own change, not yet
        // applied, must not snap back.
        if (!web_.GetValue(control.parameter->id, &value) ||
            (control.known && value == control.shown)) {
            continue;
        }
        control.shown = value;
        control.known = true;
        Show(control, value);
    }
}

void ParameterWebView::Show(const Control& control, float value) {
    const QSignalBlocker quiet(control.widget);
    switch (control.parameter->kind) {
    case ParameterKind::Continuous: {
        static_cast<QDoubleSpinBox*>(control.widget)->setValue(value);
        const QSignalBlocker quietSlider(control.slider);
        control.slider->setValue(TickOf(*control.parameter, value));
        break;
    }
    case ParameterKind::Discrete: {
        auto* menu = static_cast<QComboBox*>(control.widget);
        menu->setCurrentIndex(menu->findData(static_cast<int>(std::lround(value))));
        break;
    }
    case ParameterKind::Switch:
        static_cast<QCheckBox*>(control.widget)->setChecked(value >= 0.5f);
        break;
    }
}

QWidget* ParameterWebView::ControlFor(int32_t id) const {
    for (const Control& control : controls_) {
        if (control.parameter->id == id) {
            return control.widget;
        }
    }
    return nullptr;
}

} // namespace vocato::ui
