// The window on a real JACK server (dummy backend): the live input is the source from the
// start, and the oscilloscope shows what it captures.
#include "WindowFixture.h"

namespace vocato::test {

using LiveInputWindow = JackWindowTest;

TEST_F(LiveInputWindow, TheLiveInputRunsFromTheStartAndTheOscilloscopeDrawsIt) {
    const app::ProducerConnector& connector = Win().Session().Connector();
    EXPECT_TRUE(connector.connected);
    EXPECT_TRUE(connector.running);
    EXPECT_TRUE(connector.connection.activeProducer == connector.connection.producer);
    EXPECT_TRUE(Win().PanelState().liveInput);
    EXPECT_FALSE(Win().View()->Button(ui::PanelButton::PlayWave)->isEnabled());
    Wait(200);
    EXPECT_TRUE(Win().View()->OscilloscopeRunning());
    // The dummy backend captures silence: a flat trace on the centre line.
    const QImage shot = Shot();
    EXPECT_EQ(shot.pixel(16 + 60, 71), qRgb(255, 255, 31));
    EXPECT_NE(shot.pixel(16 + 60, 60), qRgb(255, 255, 31));
}

} // namespace vocato::test
