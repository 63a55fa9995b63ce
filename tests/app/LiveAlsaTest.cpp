// The path without a JACK server: ALSA capture on its own thread and the synthesizer through
// FluidSynth's ALSA driver. No sound card exists here, so both ALSA devices are alsa-lib's
// JACK plugin (package libasound2-plugins) wired to a private JACK server's test clients.
#include "LiveTestSupport.h"

#include <alsa/asoundlib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>

namespace vocato::test {
namespace {

// Must run before the process reads any ALSA configuration.
void UseAlsaConfiguration(const std::string& path) {
    std::ofstream(path) << R"(
pcm.vocato_capture { type plug slave.pcm "vocato_capture_jack" }
pcm.vocato_capture_jack { type jack capture_ports { 0 "player:out" } }
pcm.vocato_playback { type plug slave.pcm "vocato_playback_jack" }
pcm.vocato_playback_jack {
    type jack
    playback_ports { 0 "recorder:audio_in" 1 "recorder:audio_in" }
}
)";
    const std::string system = std::string(snd_config_topdir()) + "/alsa.conf";
    ::setenv("ALSA_CONFIG_PATH", (system + ":" + path).c_str(), 1);
}

TEST(LiveAlsa, CapturedVoiceBecomesNotesAndTheSynthesizerSoundsThroughFluidSynthsDriver) {
    TempDir dir;
    UseAlsaConfiguration(dir.File("asound.conf"));
    JackServer server;
    ASSERT_TRUE(server.Ready());
    PlayerClient player("player", Melody());
    RecorderClient recorder("recorder", 44100 * 8);
    ASSERT_TRUE(player.Ok() && recorder.Ok());

    KeptAlerts alerts;
    app::LiveSettings settings = JackOnlySettings(true);
    settings.audio.jack = false;
    settings.audio.alsa = true;
    settings.audio.alsaDevice = "vocato_capture";
    settings.audio.synthDriver = "alsa";
    settings.audio.synthDevice = "vocato_playback";
    settings.verbose = true;
    app::LiveSession session(settings, alerts);
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    ASSERT_EQ(session.Audio().Active(), app::LiveAudio::Backend::Alsa) << report;
    EXPECT_NE(report.find("FluidSynth's alsa driver"), std::string::npos) << report;

    char* printed = nullptr;
    size_t printedSize = 0;
    std::FILE* out = open_memstream(&printed, &printedSize);
    player.Play();
    ASSERT_TRUE(WaitFor([&] { return player.Done(); }, 10.0, [&] { session.Tick(out, stderr); }));
    WaitFor([] { return false; }, 0.5, [&] { session.Tick(out, stderr); });
    std::fclose(out);
    const std::string notes(printed, printedSize);
    std::free(printed);

    size_t at = 0;
    for (const char* note : {"note on  C4 (60)", "note on  E4 (64)", "note on  A4 (69)"}) {
        at = notes.find(note, at);
        EXPECT_NE(at, std::string::npos) << note << " in order in\n" << notes;
    }

    // The synthesizer played what it was sent: its loudest stretch is one of the three notes.
    const std::vector<float> audio = recorder.Audio();
    ASSERT_GT(audio.size(), 44100u * 3);
    double best = 0.0;
    size_t from = 0;
    for (at = 0; at + 8192 < audio.size(); at += 4096) {
        const double energy = std::inner_product(&audio[at], &audio[at + 8192], &audio[at], 0.0);
        if (energy > best) {
            best = energy;
            from = at;
        }
    }
    ASSERT_GT(best, 0.0) << "the synthesizer was silent";
    const double hz = EstimatePitchHz(audio.data() + from, 8192, 44100.0);
    double nearest = 1e9;
    for (int key : kMelodyKeys) {
        nearest = std::min(nearest, std::abs(Cents(hz, 440.0 * std::pow(2.0, (key - 69) / 12.0))));
    }
    EXPECT_LT(nearest, 30.0) << hz << " Hz";
    session.Stop();
    EXPECT_TRUE(alerts.shown.empty());
}

} // namespace
} // namespace vocato::test
