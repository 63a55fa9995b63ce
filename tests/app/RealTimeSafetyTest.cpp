// The audio threads never allocate, lock, sleep or print: every such call made inside a
// marked stretch of a thread is counted by RealTimeWatch.
#include "LiveTestSupport.h"
#include "RealTimeWatch.h"

#include "NodeParameters.h"

#include "AudioThread.h"

#include <gtest/gtest.h>

#include <chrono>
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

using RealTimeSafetyOnJack = LiveJack;

TEST_F(RealTimeSafetyOnJack, TheProcessThreadStaysCleanWhileVocatoSingsPlaysAndChangesPreset) {
    StartVocato(true);
    ResetRealTimeViolations();
    player->Play();
    ASSERT_TRUE(Wait([this] { return session->Router().SoundingNotes() > 0; }));
    const int32_t preset = 2;
    session->Node().SetParameterValue(PARAM_PRESET, session->Node().Clock().NowMicros(), &preset, 4);
    ASSERT_TRUE(Wait([this] { return player->Done(); }, 10.0));
    session->Connector().StopNodes();
    Wait([] { return false; }, 0.1);

    EXPECT_GT(recorder->Events().size(), 10u) << "the process callback did run";
    EXPECT_EQ(RealTimeViolations(), 0) << "first: " << FirstViolation();
}

// Without any audio system: the live input's failure is reported, and a sound file still
// plays in real time on a thread that keeps the same rules.
TEST(RealTimeSafety, WithoutLiveInputASoundFilePlaysInRealTimeOnACleanThread) {
    TempDir dir;
    const std::string path = dir.File("melody.wav");
    WriteSoundFile(path, {Melody().begin(), Melody().begin() + 44100});
    KeptAlerts alerts;
    app::LiveSettings settings;
    settings.audio.jack = settings.audio.synth = false;
    settings.audio.alsaDevice = "vocato_no_such_device";
    settings.file = path;
    settings.verbose = true;
    app::LiveSession session(settings, alerts);
    ResetRealTimeViolations();
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    EXPECT_NE(report.find("No live input"), std::string::npos) << report;
    EXPECT_NE(report.find("\"vocato_no_such_device\""), std::string::npos) << report;
    char* printed = nullptr;
    size_t size = 0;
    std::FILE* out = open_memstream(&printed, &size);
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(
        WaitFor([&] { return session.FileFinished(); }, 5.0, [&] { session.Tick(out, stderr); }));
    EXPECT_GT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(900));
    session.Tick(out, stderr);
    std::fclose(out);
    EXPECT_NE(std::string(printed, size).find("note on  C4 (60)"), std::string::npos) << printed;
    std::free(printed);
    EXPECT_EQ(RealTimeViolations(), 0) << "first: " << FirstViolation();
    // Alerts are the connector's: the live input failed before the file was chosen.
    EXPECT_TRUE(alerts.shown.empty());
}

} // namespace
} // namespace vocato::test
