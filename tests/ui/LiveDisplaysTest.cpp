#include "PanelFixture.h"

#include <gtest/gtest.h>

#include <QTest>

using namespace vocato::ui;
using namespace vocato::ui::testing;

namespace {

bool OctaveShows(Panel& panel, int octave, int key) {
    const QImage picture = panel.artwork.Image(("c" + std::to_string(key)).c_str());
    return panel.ShowsOnSkin(picture, {60 + 74 * octave, 220});
}

const QRgb kBar = qRgb(255, 31, 31);
const QRgb kMark = qRgb(143, 255, 31);

// The x range of the red bar on row 293, or {-1, -1} when there is none.
std::pair<int, int> BarExtent(const QImage& shot) {
    int first = -1, last = -1;
    for (int x = 0; x < shot.width(); ++x) {
        if (shot.pixel(x, 293) == kBar || shot.pixel(x, 293) == kMark) {
            first = first < 0 ? x : first;
            last = x;
        }
    }
    return {first, last};
}

} // namespace

// One sung line over the whole keyboard; after each note, the octave pictures shown as
// (octave, key), key 0 being the unlit octave.
TEST(LiveDisplays, EachNoteLightsItsKeyAndLeavingAnOctaveOrEndingTheNoteUnlightsIt) {
    const std::pair<float, std::vector<std::pair<int, int>>> steps[] = {
        {107, {{6, 12}}},       // the top end
        {25, {{0, 2}, {6, 0}}}, // the bottom end; leaving an octave resets it
        {24, {{0, 2}}},         // 24 lies on the keyboard but lights nothing new
        {60, {{0, 0}, {3, 1}}}, // middle C
        {64, {{3, 5}}},         // a step inside the octave
        {72, {{3, 0}, {4, 1}}}, // a leap
        {0, {{4, 0}}},          // the end of a note
    };
    Panel panel;
    for (const auto& [note, shown] : steps) {
        panel.host.note = note;
        panel.Settle();
        for (auto [octave, key] : shown) {
            EXPECT_TRUE(OctaveShows(panel, octave, key)) << note << ": octave " << octave;
        }
    }
}

TEST(LiveDisplays, AFullBendReachesTheBendRangeInEitherDirection) {
    Panel panel;
    panel.host.note = 60;
    panel.host.bend = 16383;
    panel.Settle();
    auto [left, right] = BarExtent(panel.Shot());
    EXPECT_EQ(left, 287);
    EXPECT_NEAR(right, 287 + 37, 1);
    panel.host.bend = 0;
    panel.Settle();
    std::tie(left, right) = BarExtent(panel.Shot());
    EXPECT_NEAR(left, 287 - 37, 1);
    EXPECT_EQ(right, 287);
    panel.host.state.bendRange = 12;
    panel.Settle();
    std::tie(left, right) = BarExtent(panel.Shot());
    EXPECT_NEAR(left, 287 - 74, 1) << "a new bend range redraws the bar";
}

TEST(LiveDisplays, TheWheelShowsOneFramePer512StepsOfBend) {
    Panel panel;
    const std::pair<float, int> cases[] = {{8192, 16}, {511, 0}, {512, 1}, {16383, 31}};
    for (auto [bend, frame] : cases) {
        panel.host.bend = bend;
        panel.Settle();
        EXPECT_TRUE(panel.ShowsOnSkin(panel.artwork.Image(("m" + std::to_string(frame)).c_str()),
                                      {17, 212}))
            << "bend " << bend;
    }
}

TEST(LiveDisplays, TheOscilloscopeMapsTheSampleRangeOntoItsWindowAndStopsWithoutInput) {
    Panel panel;
    for (int i = 0; i < 128; ++i) {
        panel.host.samples[i] = i < 40 ? -32768 : (i < 80 ? 0 : 32767);
    }
    panel.Settle();
    const QImage shot = panel.Shot();
    const QRgb trace = qRgb(255, 255, 31);
    EXPECT_EQ(shot.pixel(16 + 10, 39), trace);
    EXPECT_EQ(shot.pixel(16 + 60, 71), trace);
    EXPECT_EQ(shot.pixel(16 + 100, 102), trace);
    EXPECT_EQ(shot.pixel(16 + 39, 55), trace) << "a column spans the step between two samples";
    EXPECT_NE(shot.pixel(16 + 10, 71), trace);

    panel.host.inputConnected = false;
    ::testing::internal::CaptureStdout();
    panel.Settle(60);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Exit oscillo thread\n");
    EXPECT_FALSE(panel.view->OscilloscopeRunning());
}
