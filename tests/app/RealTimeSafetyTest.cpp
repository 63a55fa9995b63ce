// The audio threads never allocate, lock, sleep or print: every such call made inside a
// marked stretch of a thread is counted by RealTimeWatch.
#include "JackServer.h"
#include "JackTestClients.h"
#include "LiveTestSupport.h"
#include "RealTimeWatch.h"

#include "Fixtures.h"
#include "NodeParameters.h"

#include "AudioThread.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <memory>
#include <mutex>
#include <thread>

namespace vocato::test {
namespace {

TEST(RealTimeWatch, CountsAnAllocationAndALockOnAMarkedThreadOnly) {
    ResetRealTimeViolations();
    std::mutex mutex;
    auto unmarked = std::make_unique<int>(1);
    { std::lock_guard<std::mutex> lock(mutex); }
    EXPECT_EQ(RealTimeViolations(), 0);
    std::thread([&] {
        media::AudioThreadScope audio;
        auto marked = std::make_unique<int>(2);
        std::lock_guard<std::mutex> lock(mutex);
    }).join();
    EXPECT_GE(RealTimeViolations(), 2);
    EXPECT_EQ(FirstViolation(), "malloc");
}

TEST(RealTimeSafety, TheJackProcessThreadStaysCleanWhileVocatoSingsPlaysAndChangesPreset) {
    JackServer server;
    ASSERT_TRUE(server.Ready());
    KeptAlerts alerts;
    PlayerClient player("player", Melody());
    RecorderClient recorder("recorder", 44100 * 4);
    app::LiveSession session(JackOnlySettings(true), alerts);
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    media::JackClient& jack = *session.Audio().Jack();
    ASSERT_TRUE(player.ConnectTo(jack.InputPortName()));
    ASSERT_TRUE(recorder.Connect(jack.MidiPortName(), recorder.MidiPort()));
    ResetRealTimeViolations();

    player.Play();
    auto tick = [&] { session.Tick(stdout, stderr); };
    ASSERT_TRUE(WaitFor([&] { return session.Router().SoundingNotes() > 0; }, 5.0, tick));
    const int32_t preset = 2;
    session.Node().SetParameterValue(PARAM_PRESET, session.Node().Clock().NowMicros(), &preset, 4);
    ASSERT_TRUE(WaitFor([&] { return player.Done(); }, 10.0, tick));
    session.Connector().StopNodes();
    WaitFor([] { return false; }, 0.1, tick);

    EXPECT_GT(recorder.Events().size(), 10u) << "the process callback did run";
    EXPECT_EQ(RealTimeViolations(), 0) << "first: " << FirstViolation();
}

TEST(RealTimeSafety, TheSoundFileThreadRunsTheNodeCleanly) {
    TempDir dir;
    const std::string path = dir.File("melody.wav");
    const std::vector<float> melody(Melody().begin(), Melody().begin() + 44100);
    WriteSoundFile(path, melody, 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    KeptAlerts alerts;
    app::LiveSettings settings;
    settings.audio.jack = false;
    settings.audio.alsa = false;
    settings.audio.synth = false;
    settings.file = path;
    app::LiveSession session(settings, alerts);
    ResetRealTimeViolations();
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    ASSERT_TRUE(WaitFor([&] { return session.FileFinished(); }, 5.0,
                        [&] { session.Tick(stdout, stderr); }));
    EXPECT_EQ(RealTimeViolations(), 0) << "first: " << FirstViolation();
}

} // namespace
} // namespace vocato::test
