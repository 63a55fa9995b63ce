// The live input's level for a meter: a tone of known amplitude sung into Vocato on a private
// JACK server, whose own capture port carries silence.
#include "JackServer.h"
#include "JackTestClients.h"
#include "LiveTestSupport.h"

#include <gtest/gtest.h>

namespace vocato::test {
namespace {

TEST(InputLevel, AMeterSeesTheTonesPeakOnceAndSilenceAfterIt) {
    JackServer server;
    ASSERT_TRUE(server.Ready()) << "jackd (package jackd2) did not start";
    constexpr float kAmplitude = 0.3f;
    std::vector<float> signal = Sine(440.0, 44100.0, 0.5, kAmplitude);
    // Silence after the tone: when the player is done, Vocato has been fed the whole tone.
    signal.resize(signal.size() + 44100 / 2, 0.0f);
    PlayerClient player("player", signal);
    KeptAlerts alerts;
    app::LiveSession session(JackOnlySettings(false), alerts);
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    ASSERT_TRUE(session.Audio().Feeding());
    ASSERT_TRUE(player.ConnectTo(session.Audio().Jack()->InputPortName()));
    app::LiveAudio& audio = session.Audio();
    const auto tick = [&] { session.Tick(stdout, stderr); };
    const uint64_t start = audio.Jack()->Cycles();
    ASSERT_TRUE(WaitFor([&] { return audio.Jack()->Cycles() > start + 4; }, 5.0, tick));
    EXPECT_EQ(audio.TakeInputPeak(), 0.0f) << "the dummy capture port is silent";

    player.Play();
    ASSERT_TRUE(WaitFor([&] { return player.Done(); }, 5.0, tick));
    EXPECT_NEAR(audio.TakeInputPeak(), kAmplitude, kAmplitude * 0.02f);
    const uint64_t after = audio.Jack()->Cycles();
    ASSERT_TRUE(WaitFor([&] { return audio.Jack()->Cycles() > after + 4; }, 5.0, tick));
    EXPECT_EQ(audio.TakeInputPeak(), 0.0f) << "taken once, and silence since";
    EXPECT_TRUE(alerts.shown.empty());
}

} // namespace
} // namespace vocato::test
