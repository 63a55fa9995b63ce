#include "NodeHarnessWin.h"

#include "MainMenu.h"
#include "MenuItem.h"
#include "Menus.h"
#include "Preferences.h"
#include "TrackerSetting.h"
#include "WindowMessages.h"

#include "NodeParameters.h"

#include "Diagnostics.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>

#include <cstdio>
#include <iterator>
#include <utility>

namespace vocato {

namespace {

// The user's own skin, a picture named "skin" in the current directory, wins over ours.
QImage LoadSkin(const ResourceArtwork& artwork) {
    QImage own(QStringLiteral("skin"));
    return own.isNull() ? artwork.Image("skin") : own;
}

constexpr int kNodePollMs = 40;

} // namespace

NodeHarnessWin::NodeHarnessWin(QPoint topLeft, const QString& title, Handler* app,
                               WindowOptions options)
    : QWidget(nullptr), app_(app), alert_(this), skin_(LoadSkin(artwork_)) {
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    setAcceptDrops(true);
    move(topLeft);
    StartSession(std::move(options));
    BuildPanel();
    BuildPopUps();
    BuildFilePanels();
    setFixedSize(skin_.size());

    std::string report;
    session_->Start(report);
    std::fputs(report.c_str(), stderr);
    connect(&nodeTimer_, &QTimer::timeout, this, &NodeHarnessWin::PollNode);
    nodeTimer_.start(kNodePollMs);
    show();
    RestoreChoices();
}

void NodeHarnessWin::StartSession(WindowOptions options) {
    app::LiveSettings settings;
    settings.audio = std::move(options.audio);
    settings.sequencer = options.sequencer;
    if (prefs != nullptr) {
        char port[256];
        settings.midiPort = prefs->GetString("MidiPortName", "", port, sizeof port);
        int8_t channel = 1;
        settings.channel = prefs->GetInt8("MidiChannel", 1, &channel);
        settings.tracker = StoredTracker();
        int32_t on = 0;
        settings.audio.synth =
            settings.audio.synth && prefs->GetInt32("InternalSynth", 1, &on) != 0;
        // The stored port is only a choice; the switch says whether to send to it.
        if (prefs->GetInt32("MidiPort", 0, &on) == 0) {
            settings.midiPort.clear();
        }
    }
    session_ = std::make_unique<app::LiveSession>(std::move(settings), alert_);
    // At rest the wheel stands in the middle.
    session_->Displays().displayBend.store(8192.0f, std::memory_order_relaxed);
}

void NodeHarnessWin::BuildPanel() {
    mainView_ = new ui::MainView(this, *this, artwork_, skin_);
    menuBar_ = new QMenuBar(mainView_);
    menuBar_->setGeometry(0, 0, skin_.width(), 21);
    // Dark like the panel under it, so the bar reads as part of the skin.
    QPalette dark = menuBar_->palette();
    dark.setColor(QPalette::Window, QColor(30, 31, 34));
    dark.setColor(QPalette::Button, QColor(30, 31, 34));
    dark.setColor(QPalette::WindowText, QColor(216, 216, 216));
    dark.setColor(QPalette::ButtonText, QColor(216, 216, 216));
    menuBar_->setPalette(dark);
    menuBar_->setAutoFillBackground(true);
    AddMainMenu(menuBar_, this);
    connect(mainView_, &ui::MainView::ButtonMessage, this,
            [this](uint32_t what) { MessageReceived(Message(what)); });

    media::DisplaySink& display = session_->Displays();
    expressionMeter_ =
        new ui::Vumeter(mainView_, QRect(QPoint(380, 90), QPoint(390, 190)),
                        QStringLiteral("Expression"), 0, 127, &display.displayExpression);
    velocityMeter_ = new ui::Vumeter(mainView_, QRect(QPoint(410, 90), QPoint(420, 190)),
                                     QStringLiteral("Velocity"), 0, 127, &display.displayVelocity);
    rangeSlider_ = new ui::DoubleSlider(mainView_, QRect(QPoint(60, 199), QPoint(577, 209)),
                                        &state_.midiMin, &state_.midiMax, 24, 108, 48);
    connect(rangeSlider_, &ui::DoubleSlider::Released, this,
            [this] { PostMessage(Message(kNoteRangeSlider)); });
    bendSlider_ = new ui::OnSlider(mainView_, QRect(QPoint(16, 156), QPoint(143, 183)), 0, 0, 24,
                                   skin_, artwork_.Image("fader"));
    connect(bendSlider_, &ui::OnSlider::Released, this, [this](float value) {
        Message message(kBendRangeSlider);
        message.AddFloat("Value", value);
        PostMessage(message);
    });
    mainView_->setFocus();
}

void NodeHarnessWin::BuildPopUps() {
    instrumentMenu_ = new QMenu(QStringLiteral("Instrument"), this);
    AddGMInstruments(instrumentMenu_, this);
    presetMenu_ = new QMenu(QStringLiteral("Preset"), this);
    AddPreset(presetMenu_);
    SetTargetForItems(presetMenu_, this);
}

void NodeHarnessWin::BuildFilePanels() {
    openPanel_ = new QFileDialog(this, QStringLiteral("Open Wave"));
    openPanel_->setFileMode(QFileDialog::ExistingFiles);
    openPanel_->setOption(QFileDialog::DontUseNativeDialog);
    connect(openPanel_, &QFileDialog::filesSelected, this,
            [this](const QStringList& files) { RefsReceived(files); });
    savePanel_ = new QFileDialog(this, QStringLiteral("Export midifile"));
    savePanel_->setAcceptMode(QFileDialog::AcceptSave);
    savePanel_->setOption(QFileDialog::DontUseNativeDialog);
    savePanel_->setNameFilter(QStringLiteral("Standard MIDI File (*.mid *.midi)"));
    connect(savePanel_, &QFileDialog::fileSelected, this, [this](const QString& file) {
        const QFileInfo info(file);
        Message save(kSaveRequested);
        save.AddString("directory", info.absolutePath().toStdString());
        save.AddString("name", info.fileName().toStdString());
        if (app_ != nullptr) {
            app_->MessageReceived(save);
        }
    });
}

void NodeHarnessWin::RestoreChoices() {
    char name[256];
    int8_t preset = 1, instrument = 0;
    if (prefs != nullptr) {
        prefs->GetInt8("Preset", 1, &preset);
        prefs->GetString("PresetName", "Default", name, sizeof name);
    } else {
        std::snprintf(name, sizeof name, "Default");
    }
    PostMessage(PresetMessage(preset, name));
    if (prefs != nullptr) {
        prefs->GetInt8("Instrument", 0, &instrument);
        prefs->GetString("instrumentName", "ACOUSTIC GRAND", name, sizeof name);
    } else {
        std::snprintf(name, sizeof name, "ACOUSTIC GRAND");
    }
    PostMessage(InstrumentMessage(instrument, name));
    if (prefs == nullptr) {
        return;
    }
    // The last session's own choices come after the preset, which would reset them; what
    // was never stored stays as the preset leaves it.
    QMetaObject::invokeMethod(
        this,
        [this] {
            const std::pair<const char*, float*> stored[] = {{"Transpose", &state_.transpose},
                                                             {"BendRange", &state_.bendRange},
                                                             {"midiMin", &state_.midiMin},
                                                             {"midiMax", &state_.midiMax}};
            const int32_t ids[] = {PARAM_TRANSPOSE, PARAM_BEND_RANGE, PARAM_MIDI_MIN,
                                   PARAM_MIDI_MAX};
            for (size_t i = 0; i < std::size(stored); ++i) {
                if (prefs->HasValue(stored[i].first, FieldType::Float)) {
                    prefs->GetFloat(stored[i].first, *stored[i].second, stored[i].second);
                    HandParameter(ids[i], stored[i].second);
                }
            }
            bendSlider_->SetValue(state_.bendRange);
            mainView_->AfficheTranspose();
            mainView_->update(kBendRangeNumberArea);
            rangeSlider_->update();
        },
        Qt::QueuedConnection);
}

NodeHarnessWin::~NodeHarnessWin() {
    // They lean on the session: they go first, and the preferences write their values now.
    delete inputWindow_;
    delete controlsWindow_;
    delete prefWindow_;
    nodeTimer_.stop();
    session_->Stop();
    if (prefs != nullptr) {
        prefs->SetFloat("midiMin", state_.midiMin);
        prefs->SetFloat("midiMax", state_.midiMax);
        prefs->SetFloat("Transpose", state_.transpose);
        prefs->SetFloat("BendRange", state_.bendRange);
        // Written when missing, so the file shows the choice; never over the preferences
        // window's choice for the next start.
        int32_t stored = 0;
        if (prefs->FindInt32(kTrackerKey, &stored) != B_OK) {
            StoreTracker(session_->Tracker());
        }
    }
}

void NodeHarnessWin::closeEvent(QCloseEvent* event) {
    // Closing the main window ends the program.
    if (app_ != nullptr) {
        app_->MessageReceived(Message(kQuitRequested));
    }
    event->accept();
}

void NodeHarnessWin::PostMessage(const Message& message) {
    QMetaObject::invokeMethod(
        this, [this, message] { MessageReceived(message); }, Qt::QueuedConnection);
}

void NodeHarnessWin::HandParameter(int32_t id, const void* value) {
    // One millisecond ahead, so that the node applies it at its next buffer.
    VocatoNode& node = session_->Node();
    node.SetParameterValue(id, node.Clock().NowMicros() + 1000, value, 4);
}

float NodeHarnessWin::DisplayNote() const {
    return session_->Displays().displayNote.load(std::memory_order_relaxed);
}

float NodeHarnessWin::DisplayBend() const {
    return session_->Displays().displayBend.load(std::memory_order_relaxed);
}

bool NodeHarnessWin::ReadOscilloscope(int16_t (&samples)[128]) const {
    return session_->Displays().oscilloBuffer.Read(samples);
}

void NodeHarnessWin::SendTranspose(float semitones) {
    state_.transpose = semitones;
    VocatoNode& node = session_->Node();
    node.SetParameterValue(PARAM_TRANSPOSE, node.Clock().NowMicros(), &state_.transpose, 4);
}

bool NodeHarnessWin::NodeFile() {
    app::ProducerConnector& connector = session_->Connector();
    return connector.NodeFile(connector.fileRef, connector.connection.fileProducer);
}

bool NodeHarnessWin::ChangeProducer(ui::Source source) {
    app::ProducerConnector& connector = session_->Connector();
    const bool live = source == ui::Source::LiveInput;
    const bool ok = connector.ChangeProducer(live ? connector.connection.producer
                                                  : connector.connection.fileProducer);
    if (ok) {
        connector.liveInput = live;
        mainView_->StartOscilloThread();
    } else if (!live) {
        connector.fileLoaded = false;
        connector.waveFileName.clear();
    }
    return ok;
}

void NodeHarnessWin::SetChosenFile(const QString& path) {
    state_.fileLoaded = true;
    mainView_->SetWaveFileName(QFileInfo(path).fileName());
}

void NodeHarnessWin::RefsReceived(const QStringList& paths) {
    app::ProducerConnector& connector = session_->Connector();
    for (qsizetype i = paths.size() - 1; i >= 0; --i) {
        const QFileInfo info(paths[i]);
        if (!info.isFile() || !connector.OpenFile(paths[i].toStdString())) {
            continue;
        }
        SetChosenFile(paths[i]);
        SyncPlayWave();
    }
}

void NodeHarnessWin::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
    }
}

void NodeHarnessWin::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) {
            paths << url.toLocalFile();
        }
    }
    if (!paths.isEmpty()) {
        RefsReceived(paths);
        event->acceptProposedAction();
    }
}

void NodeHarnessWin::SyncPlayWave() {
    const app::ProducerConnector& connector = session_->Connector();
    ui::PictureButton* play = mainView_->Button(ui::PanelButton::PlayWave);
    play->SetValue(connector.playWaveValue ? 1 : 0);
    play->setEnabled(connector.playWaveEnabled);
}

void NodeHarnessWin::PollNode() {
    session_->Tick(stdout, stderr);
    const media::DisplaySink& display = session_->Displays();
    const uint32_t reports = display.reports.load(std::memory_order_acquire);
    if (reports == reportsSeen_) {
        return;
    }
    reportsSeen_ = reports;
    // Only what changed since the last look: a field the node never reported keeps 0.
    const auto changed = [](const std::atomic<float>& field, float& seen) {
        const float now = field.load(std::memory_order_relaxed);
        const bool differs = now != seen;
        seen = now;
        return differs;
    };
    if (changed(display.transpose, reported_[0])) {
        SetTranspose(reported_[0]);
    }
    if (changed(display.bendRange, reported_[1])) {
        SetBendRange(reported_[1]);
    }
    if (changed(display.midiMin, reported_[2])) {
        SetMidiMin(reported_[2]);
    }
    if (changed(display.midiMax, reported_[3])) {
        SetMidiMax(reported_[3]);
    }
}

void NodeHarnessWin::SetTranspose(float semitones) {
    state_.transpose = semitones;
    mainView_->AfficheTranspose();
}

void NodeHarnessWin::SetBendRange(float semitones) {
    state_.bendRange = semitones;
    bendSlider_->SetValue(semitones);
    mainView_->update(kBendRangeNumberArea);
}

void NodeHarnessWin::SetMidiMin(float note) {
    state_.midiMin = note;
    rangeSlider_->update();
}

void NodeHarnessWin::SetMidiMax(float note) {
    state_.midiMax = note;
    rangeSlider_->update();
}

const media::MidiStore* NodeHarnessWin::MidiStore() const {
    return session_->Displays().recording.Kept();
}

} // namespace vocato
