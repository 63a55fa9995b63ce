// The windows of the Options menu and the Input button: the converter's controls round-trip
// through the node's parameter events, the preferences reach the settings file, and the input
// window tells what it can adjust (on a JACK server, where the live input runs from the start).
#include "WindowFixture.h"
#include "WindowMessages.h"

#include "InputWin.h"
#include "MediaNodeControlApp.h"
#include "Menus.h"
#include "PanelWindow.h"
#include "PrefWindow.h"
#include "WindowAlert.h"

#include "MenuField.h"
#include "ParameterWebView.h"

#include "NodeAccess.h"
#include "NodeParameters.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QSlider>

#include <thread>

namespace vocato::test {

TEST_F(WindowTest, TheConverterControlsShowTheNodesValuesAndChangesGoThroughItsEventsAndBack) {
    Win().MessageReceived(Message(kConverterControls));
    auto& panel = *static_cast<PanelWindow*>(Win().ControlsWindowOpen());
    Win().MessageReceived(Message(kConverterControls));
    EXPECT_EQ(&panel, Win().ControlsWindowOpen()) << "a second request raises the open window";
    EXPECT_EQ(panel.windowTitle(), "Vocato controls");
    VocatoNode& node = Win().Session().Node();
    auto spin = [&](int32_t id) {
        return qobject_cast<QDoubleSpinBox*>(panel.View()->ControlFor(id));
    };
    for (int32_t id : kParameterIds) {
        ASSERT_NE(panel.View()->ControlFor(id), nullptr) << id;
        if (spin(id) != nullptr) {
            EXPECT_NEAR(spin(id)->value(), ParameterValue(node, id), 0.01) << id;
        }
    }
    auto* preset = qobject_cast<QComboBox*>(panel.View()->ControlFor(PARAM_PRESET));
    EXPECT_EQ(preset->count(), 20);
    // Nothing plays here, so the test is the node's thread: it applies what is due.
    auto applyQueuedChanges = [&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
        node.RunEvents();
    };

    QDoubleSpinBox* startLevel = spin(PARAM_START_LEVEL_DB);
    startLevel->setValue(-30);
    auto* slider = panel.View()->findChild<QSlider*>(startLevel->objectName() + "-slider");
    EXPECT_EQ(slider->value(), slider->maximum() - 60) << "half-decibel steps from the top";
    panel.View()->Refresh();
    EXPECT_EQ(startLevel->value(), -30) << "a change the node has not applied yet stays shown";
    applyQueuedChanges();
    EXPECT_EQ(ParameterValue(node, PARAM_START_LEVEL_DB), -30);

    // A preset rewrites the note range inside the node; the panel follows.
    const int flute = preset->findText("Flute");
    preset->setCurrentIndex(flute);
    emit preset->activated(flute);
    applyQueuedChanges();
    EXPECT_EQ(ParameterValue(node, PARAM_PRESET), 18);
    panel.View()->Refresh();
    EXPECT_EQ(spin(PARAM_MIDI_MIN)->value(), 60);
    EXPECT_EQ(spin(PARAM_MIDI_MAX)->value(), 96);
    // The front panel reads the node on its own timer, later on a loaded machine.
    EXPECT_TRUE(QTest::qWaitFor([this] { return Win().PanelState().midiMin == 60; }, 2000))
        << "the front panel's range follows as well, not " << Win().PanelState().midiMin;

    // Moving the slider moves the number and the node.
    QDoubleSpinBox* bendRange = spin(PARAM_BEND_RANGE);
    panel.View()->findChild<QSlider*>(bendRange->objectName() + "-slider")->setValue(11);
    EXPECT_EQ(bendRange->value(), 12);
    applyQueuedChanges();
    EXPECT_EQ(node.BendRange(), 12);
}

TEST_F(WindowTest, ParametersOpensOnePreferencesWindowWhoseChoicesWaitForTheNextStart) {
    Win().MessageReceived(Message(kParameters));
    Win().MessageReceived(Message(kParameters));
    EXPECT_EQ(VisibleWindows<PrefWindow>().size(), 1u);
    auto* window = static_cast<PrefWindow*>(Win().PrefWindowOpen());
    EXPECT_EQ(window->windowTitle(), "Setting...");
    HardwarePrefView* view = window->HardwareView();
    EXPECT_TRUE(view->InternalSynthBox()->isChecked());
    EXPECT_FALSE(view->ExternalPortBox()->isChecked());
    EXPECT_EQ(view->ChannelField()->Chosen(), "1");
    EXPECT_EQ(view->PortField()->Chosen(), "") << "no MIDI input exists here";
    EXPECT_EQ(view->TrackerField()->Chosen(), "Precise");
    EXPECT_NE(window->findChild<QLabel*>("Restart note"), nullptr);
    // Laid out one under the other, nothing overlapping.
    const QWidget* rows[] = {view->InternalSynthBox(), view->ExternalPortBox(), view->PortField(),
                             view->ChannelField(), view->TrackerField()};
    for (size_t i = 1; i < std::size(rows); ++i) {
        EXPECT_GT(rows[i]->geometry().top(), rows[i - 1]->geometry().bottom()) << i;
    }
    EXPECT_TRUE(view->rect().contains(view->TrackerField()->geometry()));

    window->close();
    Wait(20);
    EXPECT_EQ(Win().PrefWindowOpen(), nullptr);
    int32_t value = -1;
    int8_t channel = 0;
    EXPECT_EQ(prefs->GetInt32("InternalSynth", -1, &value), 1) << "what it loaded goes back";
    EXPECT_EQ(prefs->GetInt32("MidiPort", -1, &value), 0);
    EXPECT_EQ(prefs->GetInt8("MidiChannel", 0, &channel), 1);
    Win().MessageReceived(Message(kParameters));
    ASSERT_NE(Win().PrefWindowOpen(), nullptr) << "after closing, a new one opens";

    window = static_cast<PrefWindow*>(Win().PrefWindowOpen());
    view = window->HardwareView();
    view->InternalSynthBox()->click();
    view->ExternalPortBox()->click();
    FindItem(view->ChannelField()->Menu(), "5")->trigger();
    EXPECT_EQ(view->ChannelField()->Chosen(), "5");
    window->MessageReceived(MidiPortMessage("synth:midi_in"));
    FindItem(view->TrackerField()->Menu(), "Classic")->trigger();
    window->close();
    Wait(20);

    EXPECT_EQ(Win().Session().Node().Channel(), 1) << "the running node keeps its channel";
    EXPECT_EQ(Win().Session().Tracker(), kDefaultTrackerKind);
    delete app_->Window();
    TPreferences file("Vocato");
    char port[256];
    EXPECT_EQ(file.GetInt32("InternalSynth", -1, &value), 0);
    EXPECT_EQ(file.GetInt32("MidiPort", -1, &value), 1);
    EXPECT_EQ(file.GetInt8("MidiChannel", 0, &channel), 5);
    EXPECT_STREQ(file.GetString("MidiPortName", "", port, sizeof port), "synth:midi_in");
    EXPECT_EQ(file.GetInt32("Tracker", -1, &value), 0)
        << "closing the main window keeps the choice made for the next start";
}

TEST_F(WindowTest, WithoutALiveInputTheInputWindowSaysSoAndOpensOnce) {
    Win().MessageReceived(Message(kInputWindow));
    auto* input = static_cast<InputWin*>(Win().InputWindowOpen());
    ASSERT_NE(input, nullptr);
    Win().MessageReceived(Message(kInputWindow));
    EXPECT_EQ(input, Win().InputWindowOpen());
    EXPECT_EQ(input->windowTitle(), "Vocato input");
    EXPECT_EQ(input->View(), nullptr);
    ASSERT_NE(input->Notice(), nullptr);
    EXPECT_TRUE(input->Notice()->text().contains("no live input"))
        << input->Notice()->text().toStdString();
    input->close();
    Wait(20);
    EXPECT_EQ(Win().InputWindowOpen(), nullptr);
}

using InputWindowOnJack = JackWindowTest;

TEST_F(InputWindowOnJack, TheLiveInputRunsFromTheStartAndTheWindowChangesWhichPortsFeedIt) {
    const app::ProducerConnector& connector = Win().Session().Connector();
    EXPECT_TRUE(connector.connected && connector.running);
    EXPECT_EQ(connector.connection.activeProducer, connector.connection.producer);
    EXPECT_TRUE(Win().PanelState().liveInput);
    EXPECT_FALSE(Win().View()->Button(ui::PanelButton::PlayWave)->isEnabled());
    Wait(200);
    EXPECT_TRUE(Win().View()->OscilloscopeRunning());
    // The dummy backend captures silence: a flat trace on the centre line.
    const QImage shot = Shot();
    EXPECT_EQ(shot.pixel(16 + 60, 71), qRgb(255, 255, 31));
    EXPECT_NE(shot.pixel(16 + 60, 60), qRgb(255, 255, 31));

    Win().MessageReceived(Message(kInputWindow));
    auto* input = static_cast<InputWin*>(Win().InputWindowOpen());
    ASSERT_NE(input->View(), nullptr);
    QCheckBox* first = nullptr;
    QCheckBox* second = nullptr;
    for (QCheckBox* box : input->View()->findChildren<QCheckBox*>()) {
        if (box->accessibleName() == "system:capture_1") {
            first = box;
        } else if (box->accessibleName() == "system:capture_2") {
            second = box;
        }
    }
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(first->isChecked()) << "Vocato connects the first capture port itself";
    EXPECT_FALSE(second->isChecked());

    const std::string ours = Win().Session().Audio().Jack()->InputPortName();
    second->click();
    first->click();
    EXPECT_TRUE(PortsConnected(server_.Name(), ours, "system:capture_2"));
    EXPECT_FALSE(PortsConnected(server_.Name(), ours, "system:capture_1"));
    Wait(ui::ParameterWebView::kPollMs * 2);
    EXPECT_TRUE(second->isChecked());
    EXPECT_FALSE(first->isChecked());
    EXPECT_EQ(input->Meter()->value(), input->Meter()->minimum())
        << "the dummy backend captures silence";
}

TEST(ControlPanelRole, ACardThatDoesNotExistIsReportedInAnAlertAndGetsNoWindow) {
    WindowAlert alert;
    MediaNodeControlApp panel(99, alert);
    EXPECT_FALSE(panel.Opened());
    EXPECT_EQ(panel.Show(), nullptr);
    const auto boxes = VisibleWindows<QMessageBox>();
    ASSERT_EQ(boxes.size(), 1u);
    QMessageBox* box = boxes[0];
    EXPECT_EQ(box->windowTitle(), "error");
    EXPECT_TRUE(box->text().startsWith("MediaNodeControlApp: couldn't find node (99):\n"))
        << box->text().toStdString();
    ASSERT_EQ(box->buttons().size(), 1);
    EXPECT_EQ(box->buttons()[0]->text(), "Ok");
    box->close();
}

} // namespace vocato::test
