// The live input's level for a meter: a tone of known amplitude sung into Vocato on a private
// JACK server, whose own capture port carries silence.
#include "LiveTestSupport.h"

namespace vocato::test {
namespace {

using InputLevel = LiveJack;

TEST_F(InputLevel, AMeterSeesTheTonesPeakOnceAndSilenceAfterIt) {
    constexpr float kAmplitude = 0.3f;
    song = Sine(440.0, 44100.0, 0.5, kAmplitude);
    // Silence after the tone: when the player is done, Vocato has been fed the whole tone.
    song.resize(song.size() + 44100 / 2, 0.0f);
    StartVocato(false);
    app::LiveAudio& audio = session->Audio();
    ASSERT_TRUE(audio.Feeding());
    const uint64_t start = audio.Jack()->Cycles();
    ASSERT_TRUE(Wait([&] { return audio.Jack()->Cycles() > start + 4; }));
    EXPECT_EQ(audio.TakeInputPeak(), 0.0f) << "the dummy capture port is silent";

    ASSERT_TRUE(SingToEnd());
    EXPECT_NEAR(audio.TakeInputPeak(), kAmplitude, kAmplitude * 0.02f);
    const uint64_t after = audio.Jack()->Cycles();
    ASSERT_TRUE(Wait([&] { return audio.Jack()->Cycles() > after + 4; }));
    EXPECT_EQ(audio.TakeInputPeak(), 0.0f) << "taken once, and silence since";
    EXPECT_TRUE(alerts.shown.empty());
}

} // namespace
} // namespace vocato::test
