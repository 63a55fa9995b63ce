#include "WindowMessages.h"
#include "WindowFixture.h"

#include "AboutWin.h"
#include "Fixtures.h"
#include "InstrumentTables.h"
#include "Menus.h"
#include "MidiRecording.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>

namespace vocato::test {

namespace {

// A drag that enters the window and is dropped there.
void Drop(QWidget& window, const QMimeData& data) {
    QDragEnterEvent enter(QPoint(300, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &enter);
    QDropEvent drop(QPointF(300, 100), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
}

std::string StoredString(const char* key) {
    char buffer[256];
    return prefs->GetString(key, "", buffer, sizeof buffer);
}

} // namespace

// Without settings the first preset and the piano are chosen; the buttons' pop-ups change them.
TEST_F(WindowTest, ThePresetAndInstrumentStartAtTheDefaultsAndFollowTheMessagesAndPopUps) {
    EXPECT_EQ(Win().PresetValue(), 1);
    EXPECT_EQ(Win().InstrumentValue(), 0);
    EXPECT_EQ(Win().View()->PresetName(), "Default");
    EXPECT_EQ(Win().View()->InstrumentName(), "ACOUSTIC GRAND");
    int8_t stored = 0;
    EXPECT_EQ(prefs->GetInt8("Preset", 0, &stored), 1);
    EXPECT_EQ(StoredString("instrumentName"), "ACOUSTIC GRAND");
    EXPECT_EQ(Win().size(), skin_.size());

    Message numberOnly(kPresetChosen);
    numberOnly.AddInt8("Preset", 5);
    Win().MessageReceived(numberOnly);
    EXPECT_EQ(Win().PresetValue(), 5);
    EXPECT_EQ(Win().View()->PresetName(), "Default")
        << "a preset without a name keeps the shown one";
    EXPECT_EQ(StoredString("PresetName"), "Default");

    Press(ui::PanelButton::Instrument);
    EXPECT_TRUE(Win().InstrumentMenu()->isVisible());
    Win().InstrumentMenu()->close();
    Press(ui::PanelButton::Preset);
    EXPECT_TRUE(Win().PresetMenu()->isVisible());
    Win().PresetMenu()->close();

    QAction* preset = FindItem(Win().PresetMenu(), QString::fromLatin1(kPresetLabels[2]));
    ASSERT_NE(preset, nullptr);
    preset->trigger();
    QAction* violin = FindItem(Win().InstrumentMenu(), QStringLiteral("VIOLIN"));
    ASSERT_NE(violin, nullptr);
    violin->trigger();
    EXPECT_EQ(Win().PresetValue(), 3);
    EXPECT_EQ(Win().InstrumentValue(), 40);
    EXPECT_EQ(Win().View()->PresetName(), QString::fromLatin1(kPresetLabels[2]));
    EXPECT_EQ(Win().View()->InstrumentName(), "VIOLIN");
    EXPECT_EQ(StoredString("PresetName"), kPresetLabels[2]);
    EXPECT_EQ(prefs->GetInt8("Instrument", 0, &stored), 40);
}

TEST_F(WindowTest, AMessageTheWindowDoesNotKnowEndsWithTheApplication) {
    ::testing::internal::CaptureStdout();
    Win().MessageReceived(Message(FourCC("zzzz")));
    const std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "Window message\nApp Message " + std::to_string(FourCC("zzzz")) + "\n");
}

TEST_F(WindowTest, OpenWaveShowsThePanelAndItsChoiceBecomesTheFile) {
    TempDir dir;
    WriteTone(dir, "song.wav", 0.2);
    Win().MessageReceived(Message(kOpenWave));
    ASSERT_TRUE(Win().OpenPanel()->isVisible());
    Win().OpenPanel()->setDirectory(QString::fromStdString(dir.Path()));
    Wait(50);
    auto* name = Win().OpenPanel()->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(name, nullptr);
    QTest::keyClicks(name, QStringLiteral("song.wav"));
    QTest::keyClick(name, Qt::Key_Return);
    Wait(20);
    EXPECT_TRUE(Win().PanelState().fileLoaded);
    EXPECT_EQ(Win().View()->WaveFileName(), "song.wav");
}

TEST_F(WindowTest, TheExportPanelOpensOnlyWhenSomethingWasRecorded) {
    Press(ui::PanelButton::RecMidi);
    ASSERT_NE(Win().MidiStore(), nullptr);
    EXPECT_TRUE(Win().Recording());
    EXPECT_EQ(Win().MidiStore()->CountEvents(), kOpeningEvents);
    Win().MessageReceived(Message(kExportMidi));
    EXPECT_FALSE(Win().SavePanel()->isVisible());
    Press(ui::PanelButton::StopMidi);
    EXPECT_FALSE(Win().Recording());
    EXPECT_EQ(Win().View()->Button(ui::PanelButton::RecMidi)->Value(), 0);
    EXPECT_NE(Win().MidiStore(), nullptr) << "a stopped recording is kept for export";
}

TEST_F(WindowTest, TheBendSliderAndTheNodesReportMoveTheThumbAndTheNumber) {
    ui::OnSlider* slider = Win().BendSlider();
    QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(120, 10));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(120, 10));
    Wait(20);
    EXPECT_FLOAT_EQ(Win().PanelState().bendRange, 24);
    Win().SetBendRange(12);
    Wait(20);
    EXPECT_FLOAT_EQ(slider->Value(), 12);
    const QImage number = Shot().copy(QRect(QPoint(146, 160), QPoint(200, 180)));
    Win().SetBendRange(2);
    Wait(20);
    EXPECT_NE(Shot().copy(QRect(QPoint(146, 160), QPoint(200, 180))), number)
        << "the number at (150, 174) is redrawn";
}

TEST_F(WindowTest, DroppedTextDoesNothingAndOfSeveralFilesTheFirstIsChosen) {
    TempDir dir;
    QMimeData text;
    text.setText(QStringLiteral("a clipping"));
    Drop(Win(), text);
    EXPECT_FALSE(Win().PanelState().fileLoaded);

    QList<QUrl> urls;
    for (const char* name : {"first.wav", "second.wav", "third.wav"}) {
        urls << QUrl::fromLocalFile(QString::fromStdString(WriteTone(dir, name, 0.2)));
    }
    QMimeData files;
    files.setUrls(urls);
    Drop(Win(), files);
    EXPECT_TRUE(Win().PanelState().fileLoaded);
    EXPECT_EQ(Win().View()->WaveFileName(), "first.wav");
    EXPECT_TRUE(Win().PanelState().liveInput) << "a drop does not change the chosen source";
}

TEST_F(WindowTest, ClosingTheWindowLeavesItsValuesInTheSettingsAndTheNextWindowTakesThemBack) {
    Click({460, 165});
    EXPECT_FLOAT_EQ(Win().PanelState().transpose, -24);
    Win().PanelState().midiMin = 40;
    const float bendRange = Win().PanelState().bendRange;
    delete app_->Window();
    float value = 0;
    EXPECT_FLOAT_EQ(prefs->GetFloat("Transpose", 0, &value), -24);
    EXPECT_FLOAT_EQ(prefs->GetFloat("midiMin", 0, &value), 40);
    EXPECT_FLOAT_EQ(prefs->GetFloat("midiMax", 0, &value), 72);
    EXPECT_FLOAT_EQ(prefs->GetFloat("BendRange", 0, &value), bendRange);
    int32_t tracker = -1;
    EXPECT_EQ(prefs->GetInt32("Tracker", -1, &tracker), static_cast<int32_t>(kDefaultTrackerKind))
        << "the tracker choice is kept where it can be changed";

    prefs->SetFloat("Transpose", 12);
    prefs->RemoveName("midiMax");
    app_->ReadyToRun(Options());
    Wait(100);
    EXPECT_FLOAT_EQ(Win().PanelState().transpose, 12);
    EXPECT_FLOAT_EQ(Win().PanelState().midiMin, 40);
    EXPECT_FLOAT_EQ(Win().PanelState().midiMax, 72) << "what was never stored keeps its value";
    QImage lit = skin_.copy(544, 157, 15, 14).convertToFormat(QImage::Format_RGB32);
    QPainter(&lit).drawImage(0, 0, ResourceArtwork().Image("On"));
    EXPECT_EQ(Shot().copy(544, 157, 15, 14), lit);
}

TEST_F(WindowTest, EachAboutRequestOpensABoxOfItsOwn) {
    const auto boxes = VisibleWindows<ui::AboutWin>;
    EXPECT_TRUE(boxes().empty()) << "the splash is gone once the window is up";
    Win().MessageReceived(Message(kAboutRequested));
    Win().MessageReceived(Message(kAboutRequested));
    Wait(1200);
    const std::vector<ui::AboutWin*> open = boxes();
    ASSERT_EQ(open.size(), 2u);
    EXPECT_FALSE(open[0]->IsSplash());
    SaveScreenshot(*open[0], "about-box");
    for (ui::AboutWin* box : open) {
        box->close();
    }
    Wait(20);
    EXPECT_TRUE(boxes().empty());
}

} // namespace vocato::test
