// The main window and the controller of the whole converter: builds the skinned front panel,
// runs the converter node on the live input (or a sound file) through a live session, turns
// the panel's messages into parameter changes, records MIDI and exports it, and shows what
// the node reports back.
//
// Threads: everything here runs on the GUI thread. The node reaches the window only through
// its display sink (atomics), which the window's timers poll.
#pragma once

#include "DoubleSlider.h"
#include "Handler.h"
#include "MainView.h"
#include "OnSlider.h"
#include "ResourceArtwork.h"
#include "Vumeter.h"
#include "WindowAlert.h"

#include "LiveSession.h"

#include <QImage>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <string>

class QFileDialog;
class QMenu;
class QMenuBar;

namespace vocato {

// Where the main view draws the bend range's number.
inline const QRect kBendRangeNumberArea(QPoint(146, 160), QPoint(200, 200));

struct WindowOptions {
    app::LiveAudioOptions audio;
    bool sequencer = true;
};

class NodeHarnessWin final : public QWidget, public Handler, public ui::MainViewHost {
    Q_OBJECT
public:
    // Events a recording can hold: about an hour of a busy voice.
    static constexpr size_t kRecordingCapacity = 1 << 20;

    // `app` receives the messages the window does not handle (may be null). GUI thread.
    NodeHarnessWin(QPoint topLeft, const QString& title, Handler* app, WindowOptions options = {});
    ~NodeHarnessWin() override;

    void MessageReceived(const Message& message) override;
    // Hands `message` to the window after the current event, as a posted message.
    void PostMessage(const Message& message);
    // Sound files opened or dropped; the first path ends up the chosen file.
    void RefsReceived(const QStringList& paths);
    // Records are kept until the next 'MRec'; null when nothing was recorded.
    const media::MidiStore* MidiStore() const;
    bool Recording() const { return recording_; }

    // The node's reports of changes on its side, applied to the panel.
    void SetTranspose(float semitones);
    void SetBendRange(float semitones);
    void SetMidiMin(float note);
    void SetMidiMax(float note);

    // ui::MainViewHost
    ui::FrontPanelState& PanelState() override { return state_; }
    float DisplayNote() const override;
    float DisplayBend() const override;
    bool ReadOscilloscope(int16_t (&samples)[128]) const override;
    void SendTranspose(float semitones) override;
    bool NodeFile() override;
    bool ChangeProducer(ui::Source source) override;

    ui::MainView* View() const { return mainView_; }
    app::LiveSession& Session() { return *session_; }
    QMenu* PresetMenu() const { return presetMenu_; }
    QMenu* InstrumentMenu() const { return instrumentMenu_; }
    QFileDialog* SavePanel() const { return savePanel_; }
    QFileDialog* OpenPanel() const { return openPanel_; }
    QWidget* PrefWindowOpen() const { return prefWindow_; }
    QWidget* InputWindowOpen() const { return inputWindow_; }
    QWidget* ControlsWindowOpen() const { return controlsWindow_; }
    ui::OnSlider* BendSlider() const { return bendSlider_; }
    ui::DoubleSlider* RangeSlider() const { return rangeSlider_; }
    int32_t InstrumentValue() const { return instrumentValue_; }
    int32_t PresetValue() const { return presetValue_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void BuildPanel();
    void BuildPopUps();
    void BuildFilePanels();
    void StartSession(WindowOptions options);
    void RestoreChoices();
    void HandParameter(int32_t id, const void* value);
    void PopUp(QMenu* menu);
    void InstrumentChosen(const Message& message);
    void PresetChosen(const Message& message);
    void StartRecording();
    void Stop();
    void ShowExportPanel();
    void PollNode();
    void SyncPlayWave();
    void SetChosenFile(const QString& path);
    // One window of a kind at a time: a second request brings the open one to the front.
    template <class Make> void OpenOnce(QPointer<QWidget>& window, Make make);

    Handler* app_;
    WindowAlert alert_;
    ResourceArtwork artwork_;
    QImage skin_;
    ui::FrontPanelState state_;
    std::unique_ptr<app::LiveSession> session_;
    ui::MainView* mainView_ = nullptr;
    QMenuBar* menuBar_ = nullptr;
    ui::Vumeter* expressionMeter_ = nullptr;
    ui::Vumeter* velocityMeter_ = nullptr;
    ui::DoubleSlider* rangeSlider_ = nullptr;
    ui::OnSlider* bendSlider_ = nullptr;
    QMenu* presetMenu_ = nullptr;
    QMenu* instrumentMenu_ = nullptr;
    QFileDialog* openPanel_ = nullptr;
    QFileDialog* savePanel_ = nullptr;
    int32_t instrumentValue_ = 0;
    int32_t presetValue_ = 0;
    bool recording_ = false;
    QPointer<QWidget> prefWindow_;
    QPointer<QWidget> inputWindow_;
    QPointer<QWidget> controlsWindow_;
    QTimer nodeTimer_;
    uint32_t reportsSeen_ = 0;
    float reported_[4] = {0, 0, 0, 0}; // transpose, bend range, note min, note max
};

} // namespace vocato
