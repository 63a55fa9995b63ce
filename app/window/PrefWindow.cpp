#include "PrefWindow.h"

#include "MenuItem.h"
#include "Menus.h"
#include "Preferences.h"
#include "TrackerSetting.h"

#include "MenuField.h"
#include "ViewLayoutFactory.h"

#include "Diagnostics.h"

#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <vector>

namespace vocato {

namespace {

constexpr uint32_t kInternalSynthBox = FourCC("insy");
constexpr uint32_t kExternalPortBox = FourCC("extp");
constexpr const char* kPortKey = "MidiPortName";
constexpr const char* kChannelKey = "MidiChannel";

// The rows under the check boxes: a field a line, a small gap between them.
constexpr int kRowGap = 6;

QMenu* TrackerMenu(QWidget* parent) {
    auto* menu = new QMenu(QStringLiteral("Tracker"), parent);
    const TrackerKind stored = StoredTracker();
    for (TrackerKind kind : {TrackerKind::Classic, TrackerKind::Precise}) {
        QString label = QString::fromLatin1(TrackerName(kind));
        label[0] = label[0].toUpper();
        QAction* item = menu->addAction(label);
        item->setData(static_cast<int>(kind));
        item->setCheckable(true);
        item->setChecked(kind == stored);
    }
    return menu;
}

// The widest label of the fields, so that their menus start on one line.
int Divider(const std::vector<ui::MenuField*>& fields) {
    int widest = 0;
    for (ui::MenuField* field : fields) {
        widest = std::max(widest, field->LabelWidth());
    }
    return widest;
}

} // namespace

HardwarePrefView::HardwarePrefView(QWidget* parent, Handler* menuTarget) : QWidget(parent) {
    setObjectName(QStringLiteral("Test Tab"));
    char port[256];
    portName_ = prefs->GetString(kPortKey, "", port, sizeof port);
    int8_t channel = 1;
    channel_ = prefs->GetInt8(kChannelKey, 1, &channel);
    ui::ViewLayoutFactory factory;
    internalSynth_ = factory.MakeCheckBox("Internal synth", "Internal synth", kInternalSynthBox,
                                          QPoint(20, 20), ui::CORNER_TOP_LEFT);
    internalSynth_->setParent(this);
    int32_t value = 0;
    internalSynth_->setChecked(prefs->GetInt32("InternalSynth", 1, &value) != 0);
    externalPort_ = factory.MakeCheckBox(
        "External midi port", "External midi port", kExternalPortBox,
        QPoint(20, internalSynth_->geometry().bottom() + 10), ui::CORNER_TOP_LEFT);
    externalPort_->setParent(this);
    externalPort_->setChecked(prefs->GetInt32("MidiPort", 0, &value) != 0);

    auto* portMenu = new QMenu(QStringLiteral("PortMidi"), this);
    AddMidiPort(portMenu, kPortKey);
    SetTargetForItems(portMenu, menuTarget);
    portField_ = new ui::MenuField(QStringLiteral("Midi Port"), portMenu, this);
    portField_->setObjectName(QStringLiteral("Midi Port"));
    // A stored port that is not there now is kept, and the field says so.
    if (portField_->Chosen().isEmpty() && !portName_.empty()) {
        portField_->Button()->setText(QString::fromStdString(portName_) + " (not found now)");
    } else if (portMenu->isEmpty()) {
        portField_->Button()->setText(QStringLiteral("(no MIDI input found)"));
    }

    auto* channelMenu = new QMenu(QStringLiteral("Channel"), this);
    AddMidiChannel(channelMenu, kChannelKey);
    SetTargetForItems(channelMenu, menuTarget);
    channelField_ = new ui::MenuField(QStringLiteral("Midi channel"), channelMenu, this);
    channelField_->setObjectName(QStringLiteral("Midi channel"));
    // Without a stored channel the menu marks nothing; the default is channel 1.
    if (channelField_->Chosen().isEmpty() && channel_ >= 1 && channel_ <= 16) {
        channelField_->Choose(channelMenu->actions().value(channel_ - 1));
    }

    trackerField_ = new ui::MenuField(QStringLiteral("Tracker"), TrackerMenu(this), this);
    trackerField_->setObjectName(QStringLiteral("Tracker"));

    auto* note =
        new QLabel(QStringLiteral("Changes take effect the next time Vocato starts."), this);
    note->setObjectName(QStringLiteral("Restart note"));

    const std::vector<ui::MenuField*> fields = {portField_, channelField_, trackerField_};
    const int divider = Divider(fields);
    for (ui::MenuField* field : fields) {
        field->SetDivider(divider);
        field->resize(field->sizeHint());
    }
    note->resize(note->sizeHint());
    const int pitch = portField_->height() + kRowGap;
    portField_->move(5, externalPort_->geometry().bottom() + 1 + 2 * kRowGap);
    std::vector<QWidget*> rows = {portField_, channelField_, trackerField_, note};
    factory.Align(rows, ui::ALIGN_LEFT, pitch);
    std::vector<QWidget*> menus = {portField_, channelField_, trackerField_};
    factory.ResizeToListMax(menus, ui::RECT_WIDTH, ui::CORNER_TOP_LEFT);

    factory.ResizeAroundChildren(*this, QPoint(10, 10));
    setMinimumSize(size());
}

HardwarePrefView::~HardwarePrefView() {
    prefs->SetInt32("InternalSynth", internalSynth_->isChecked() ? 1 : 0);
    prefs->SetInt32("MidiPort", externalPort_->isChecked() ? 1 : 0);
    media::Diagnostic("save %s \n", portName_.c_str());
    prefs->SetString(kPortKey, portName_.c_str());
    prefs->SetInt8(kChannelKey, channel_);
    for (QAction* item : trackerField_->Menu()->actions()) {
        if (item->isChecked()) {
            StoreTracker(static_cast<TrackerKind>(item->data().toInt()));
        }
    }
    // Saved now rather than at exit, so that a crash later does not lose the choice.
    prefs->Save();
}

PrefWindow::PrefWindow(QWidget* parent) : QWidget(parent, Qt::Window) {
    setWindowTitle(QStringLiteral("Setting..."));
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("PrefWindow"));
    move(80, 60);
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("PrefTabViewer"));
    hardware_ = new HardwarePrefView(this, this);
    tabs_->addTab(hardware_, QStringLiteral("Hardware"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);
    // Wider is allowed, for long port names; the height is what the controls need.
    const QSize needed = sizeHint().expandedTo(QSize(200, 150));
    setMinimumWidth(needed.width());
    setMaximumWidth(std::max(needed.width(), 1024));
    setFixedHeight(needed.height());
    resize(needed);
    show();
}

void PrefWindow::MessageReceived(const Message& message) {
    switch (message.what) {
    case kChannelChosen: {
        int8_t channel = 1;
        if (message.FindInt8("Channel", &channel) == B_OK) {
            hardware_->SetChannel(channel);
            media::Diagnostic("MidiChannel %d\n", channel);
        }
        break;
    }
    case kMidiPortChosen: {
        std::string port;
        if (message.FindString("Port", &port) == B_OK) {
            port.resize(std::min<size_t>(port.size(), 255));
            hardware_->SetPortName(port);
            media::Diagnostic("MidiPortName %s \n", port.c_str());
        }
        break;
    }
    default:
        break;
    }
}

} // namespace vocato
