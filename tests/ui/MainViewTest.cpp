#include "PanelFixture.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

using namespace vocato::ui;
using namespace vocato::ui::testing;

namespace {

void Click(MainView* view, QPoint at, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(view, button, {}, at);
    QTest::qWait(10);
}

// The transposition spots lie along row 157, the source spots down column 166.
bool LitAt(Panel& panel, QPoint at) {
    return panel.ShowsOnSkin(panel.artwork.Image("On"), at);
}

} // namespace

TEST(MainView, ButtonClicksSendTheirMessagesAndTwoStateButtonsStayDown) {
    Panel panel;
    QSignalSpy sent(panel.view.get(), &MainView::ButtonMessage);
    PictureButton* rec = panel.view->Button(PanelButton::RecMidi);
    QTest::mouseClick(rec, Qt::LeftButton);
    QTest::mouseClick(panel.view->Button(PanelButton::Panic), Qt::LeftButton);
    QTest::mouseClick(panel.view->Button(PanelButton::PlayWave), Qt::LeftButton);
    ASSERT_EQ(sent.count(), 2) << "a disabled button sends nothing";
    EXPECT_EQ(sent.at(0).at(0).value<uint32_t>(), 0x4d526563u); // 'MRec'
    EXPECT_EQ(sent.at(1).at(0).value<uint32_t>(), 0x4250616eu); // 'BPan'
    EXPECT_EQ(rec->Value(), 1);
    QTest::qWait(10);
    const QImage on = panel.artwork.Button("RecMidi").enabledOn;
    EXPECT_TRUE(panel.ShowsOnSkin(on, {232, 159})) << "the two-state button shows its on face";
}

TEST(MainView, ATransposeSpotIsSelectedOnlyInsideItsOpenBoundsAndOnlyByAPlainLeftPress) {
    Panel panel;
    EXPECT_TRUE(LitAt(panel, {513, 157})) << "no transposition lights the 0 spot";
    Click(panel.view.get(), {452, 160});
    Click(panel.view.get(), {467, 160});
    Click(panel.view.get(), {460, 165}, Qt::RightButton);
    QTest::mousePress(panel.view.get(), Qt::LeftButton, {}, {575 + 7, 165});
    QMouseEvent both(QEvent::MouseButtonPress, QPointF(582, 165), QPointF(582, 165),
                     Qt::RightButton, Qt::LeftButton | Qt::RightButton, {});
    QApplication::sendEvent(panel.view.get(), &both);
    QTest::mouseRelease(panel.view.get(), Qt::LeftButton, {}, {582, 165});
    EXPECT_EQ(panel.host.sentTranspose, std::vector<float>{24}) << "only the plain left press";
    Click(panel.view.get(), {460, 165});
    EXPECT_EQ(panel.host.state.transpose, -24);
    EXPECT_EQ(panel.host.sentTranspose, (std::vector<float>{24, -24}));
    EXPECT_TRUE(LitAt(panel, {452, 157}));
    EXPECT_FALSE(LitAt(panel, {513, 157}));
}

TEST(MainView, AnUnknownTranspositionLightsTheFarLeftAndAnExposeRestoresTheSelectors) {
    Panel panel;
    panel.host.state.transpose = 7;
    panel.host.state.liveInput = false;
    panel.view->update();
    QTest::qWait(20);
    EXPECT_TRUE(LitAt(panel, {0, 157}));
    EXPECT_TRUE(LitAt(panel, {166, 103}));
}

TEST(MainView, SwitchingToAChosenFileEnablesPlayWaveAndBackDisablesIt) {
    Panel panel;
    Click(panel.view.get(), {170, 110});
    EXPECT_EQ(panel.host.nodeFileCalls, 0) << "no file is chosen yet";
    EXPECT_TRUE(panel.host.producerChanges.empty());
    EXPECT_TRUE(LitAt(panel, {166, 131}));
    panel.host.state.fileLoaded = true;
    Click(panel.view.get(), {170, 110});
    EXPECT_FALSE(panel.host.state.liveInput);
    PictureButton* play = panel.view->Button(PanelButton::PlayWave);
    EXPECT_TRUE(play->isEnabled());
    EXPECT_EQ(play->Value(), 0);
    EXPECT_TRUE(LitAt(panel, {166, 103}));
    Click(panel.view.get(), {170, 110});
    EXPECT_EQ(panel.host.nodeFileCalls, 1) << "the file is already the source";
    Click(panel.view.get(), {170, 130});
    EXPECT_TRUE(panel.host.state.liveInput);
    EXPECT_FALSE(play->isEnabled());
    EXPECT_TRUE(LitAt(panel, {166, 131}));
    EXPECT_EQ(panel.host.producerChanges,
              (std::vector<Source>{Source::SoundFile, Source::LiveInput}));
}

TEST(MainView, AFileThatCannotConnectIsForgottenAndTheLiveInputReturns) {
    Panel panel;
    panel.host.state.fileLoaded = true;
    panel.host.fileConnects = false;
    panel.view->SetWaveFileName("song.wav");
    Click(panel.view.get(), {170, 110});
    EXPECT_FALSE(panel.host.state.fileLoaded);
    EXPECT_TRUE(panel.view->WaveFileName().isEmpty());
    EXPECT_TRUE(panel.host.state.liveInput);
    EXPECT_FALSE(panel.view->Button(PanelButton::PlayWave)->isEnabled());
    EXPECT_EQ(panel.host.producerChanges,
              (std::vector<Source>{Source::SoundFile, Source::LiveInput}));
}

TEST(MainView, NamesAreCutToTheirFields) {
    Panel panel;
    panel.view->SetInstrumentName(QString(100, 'i'));
    panel.view->SetWaveFileName(QString(200, 'w'));
    EXPECT_EQ(panel.view->InstrumentName().size(), 63);
    EXPECT_EQ(panel.view->WaveFileName().size(), 127);
}
