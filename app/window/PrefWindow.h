// The "Parameters" window of the Options menu: the internal synthesizer switch, the external
// MIDI port switch, the MIDI port and channel, and the pitch tracker. It only edits the
// settings store; the values are written when the window closes and the converter reads
// them when it is next built, at the next start of the program, as the window says.
//
// GUI thread only.
#pragma once

#include "Handler.h"

#include <QWidget>

class QCheckBox;
class QTabWidget;

namespace vocato {

namespace ui {
class MenuField;
}

class HardwarePrefView final : public QWidget {
    Q_OBJECT
public:
    // Loads the values from the settings store (defaults when it has none); the port and
    // channel menus send their choices to `menuTarget`.
    HardwarePrefView(QWidget* parent, Handler* menuTarget);
    // Writes the values back into the settings store.
    ~HardwarePrefView() override;

    void SetPortName(const std::string& name) { portName_ = name; }
    void SetChannel(int8_t channel) { channel_ = channel; }

    QCheckBox* InternalSynthBox() const { return internalSynth_; }
    QCheckBox* ExternalPortBox() const { return externalPort_; }
    ui::MenuField* PortField() const { return portField_; }
    ui::MenuField* ChannelField() const { return channelField_; }
    ui::MenuField* TrackerField() const { return trackerField_; }

private:
    std::string portName_;
    int8_t channel_ = 1;
    QCheckBox* internalSynth_;
    QCheckBox* externalPort_;
    ui::MenuField* portField_;
    ui::MenuField* channelField_;
    ui::MenuField* trackerField_;
};

class PrefWindow final : public QWidget, public Handler {
    Q_OBJECT
public:
    // Shows itself at once; deletes itself when closed.
    explicit PrefWindow(QWidget* parent = nullptr);

    // The port and channel menus' choices.
    void MessageReceived(const Message& message) override;

    HardwarePrefView* HardwareView() const { return hardware_; }

private:
    QTabWidget* tabs_;
    HardwarePrefView* hardware_;
};

} // namespace vocato
