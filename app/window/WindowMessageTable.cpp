// The main window's message table: what each menu item, picture button and slider does.
#include "NodeHarnessWin.h"

#include "AboutWin.h"
#include "InputWin.h"
#include "Menus.h"
#include "NodeParameterWeb.h"
#include "PanelWindow.h"
#include "PrefWindow.h"
#include "Preferences.h"
#include "WindowMessages.h"

#include "MidiRecording.h"
#include "NodeParameters.h"

#include "Diagnostics.h"

#include <QCursor>
#include <QFileDialog>
#include <QMenu>

#include <string>

namespace vocato {

template <class Make> void NodeHarnessWin::OpenOnce(QPointer<QWidget>& window, Make make) {
    if (window == nullptr) {
        window = make();
    }
    window->raise();
    window->activateWindow();
}

void NodeHarnessWin::MessageReceived(const Message& message) {
    media::Diagnostic("Window message\n");
    app::ProducerConnector& connector = session_->Connector();
    switch (message.what) {
    case kAboutRequested:
        new ui::AboutWin(artwork_, false);
        break;
    case kOpenWave:
        openPanel_->show();
        break;
    case kExportMidi:
        ShowExportPanel();
        break;
    case kInstrumentButton:
        PopUp(instrumentMenu_);
        break;
    case kPresetButton:
        PopUp(presetMenu_);
        break;
    case kPlayWave:
        connector.PlayWave();
        SyncPlayWave();
        break;
    case kRecMidi:
        if (!state_.liveInput) {
            connector.PlayWave();
            SyncPlayWave();
        }
        StartRecording();
        break;
    case kStopMidi:
        Stop();
        break;
    case kPanic:
        session_->Node().SendAllNotesOff(false);
        break;
    case kInputWindow:
        OpenOnce(inputWindow_, [this] { return new InputWin(session_->Audio(), this); });
        break;
    case kParameters:
        OpenOnce(prefWindow_, [this] { return new PrefWindow(this); });
        break;
    case kConverterControls:
        OpenOnce(controlsWindow_, [this] {
            return new PanelWindow(std::make_unique<NodeParameterWeb>(session_->Node()),
                                   QStringLiteral("Vocato controls"), this);
        });
        break;
    case kBendRangeSlider: {
        float value = 0;
        message.FindFloat("Value", &value);
        state_.bendRange = value;
        HandParameter(PARAM_BEND_RANGE, &state_.bendRange);
        mainView_->update(kBendRangeNumberArea);
        break;
    }
    case kNoteRangeSlider:
        media::Diagnostic("Midichange \n");
        HandParameter(PARAM_MIDI_MIN, &state_.midiMin);
        HandParameter(PARAM_MIDI_MAX, &state_.midiMax);
        break;
    case kInstrumentChosen:
        InstrumentChosen(message);
        break;
    case kPresetChosen:
        PresetChosen(message);
        break;
    case kQuitRequested:
        close();
        break;
    default:
        if (app_ != nullptr) {
            app_->MessageReceived(message);
        }
        break;
    }
}

void NodeHarnessWin::PopUp(QMenu* menu) {
    // Just under and left of the pointer, so that the first item sits under it.
    menu->popup(QCursor::pos() - QPoint(10, 10));
}

void NodeHarnessWin::InstrumentChosen(const Message& message) {
    int8_t instrument = 0;
    message.FindInt8("Instrument", &instrument);
    std::string name;
    const bool named = message.FindString("Name", &name) == B_OK;
    if (prefs != nullptr) {
        prefs->SetInt8("Instrument", instrument);
        if (named) {
            prefs->SetString("instrumentName", name.c_str());
        }
    }
    if (named) {
        mainView_->SetInstrumentName(QString::fromStdString(name));
    }
    instrumentValue_ = instrument;
    HandParameter(PARAM_PROGRAM, &instrumentValue_);
}

void NodeHarnessWin::PresetChosen(const Message& message) {
    media::Diagnostic("Pset\n");
    int8_t preset = 1;
    message.FindInt8("Preset", &preset);
    std::string name;
    const bool named = message.FindString("Name", &name) == B_OK;
    if (prefs != nullptr) {
        prefs->SetInt8("Preset", preset);
        if (named) {
            prefs->SetString("PresetName", name.c_str());
        }
    }
    if (named) {
        mainView_->SetPresetName(QString::fromStdString(name));
    }
    presetValue_ = preset;
    HandParameter(PARAM_PRESET, &presetValue_);
}

void NodeHarnessWin::StartRecording() {
    if (!ConnectMidiStore(session_->Node(), session_->Displays(), kRecordingCapacity)) {
        return;
    }
    recording_ = true;
    mainView_->Button(ui::PanelButton::RecMidi)->SetValue(1);
}

void NodeHarnessWin::Stop() {
    app::ProducerConnector& connector = session_->Connector();
    VocatoNode& node = session_->Node();
    if (recording_) {
        mainView_->Button(ui::PanelButton::RecMidi)->SetValue(0);
        node.SendAllNotesOff(false);
        session_->Displays().recording.SetRecording(false);
        recording_ = false;
    }
    if (connector.running) {
        if (connector.connection.activeProducer == connector.connection.fileProducer) {
            connector.StopWave();
            SyncPlayWave();
        }
        connector.running = false;
    }
    node.SendAllNotesOff(false);
}

void NodeHarnessWin::ShowExportPanel() {
    const media::MidiStore* store = MidiStore();
    // The six opening events alone are not a recording.
    if (store == nullptr || store->CountEvents() <= kOpeningEvents) {
        return;
    }
    savePanel_->show();
}

} // namespace vocato
