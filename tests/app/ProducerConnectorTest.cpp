// The producer connection without a window: failure reports and their order, producers
// released exactly once, and PlayWave / StopWave on a real sound-file producer. The live
// input here has no audio system behind it, so it has no free output.
#include "JackTestClients.h"
#include "LiveTestSupport.h"

#include "Fixtures.h"

#include "LiveAudio.h"
#include "LiveInput.h"
#include "ProducerConnector.h"
#include "VocatoNode.h"

#include "SoundFileProducer.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <chrono>
#include <fstream>

namespace vocato::test {
namespace {

NodeOptions Silent() {
    NodeOptions options;
    options.internalSynth = false;
    return options;
}

app::LiveAudioOptions NoAudioSystem() {
    app::LiveAudioOptions options;
    options.jack = false;
    options.alsa = false;
    options.synth = false;
    return options;
}

class Connector : public ::testing::Test {
protected:
    std::string Tone(const std::string& name, double seconds) {
        const std::string path = dir.File(name);
        WriteSoundFile(path, Sine(440.0, 44100.0, seconds), 44100, 1,
                       SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        return path;
    }
    media::SoundFileProducer* File(app::NodeRef ref) {
        return dynamic_cast<media::SoundFileProducer*>(connector.Find(ref));
    }

    TempDir dir;
    KeptAlerts alerts;
    media::DisplaySink window;
    VocatoNode node{&window, nullptr, "", 1, Silent()};
    app::LiveMidiRouter router{node};
    app::LiveAudio audio{router, NoAudioSystem()};
    app::LiveInput live{audio};
    app::ProducerConnector connector{live, node, &router, alerts};
};

TEST_F(Connector, AProducerWithoutAFreeOutputIsReportedThenTheConnectionFails) {
    node.NodeRegistered();
    EXPECT_FALSE(connector.ConnectToNode(&connector.connection.producer));
    EXPECT_EQ(alerts.shown,
              (std::vector<std::string>{
                  "FATAL ERROR: unable to get a free output from the producer node",
                  "FATAL ERROR: unable to connect nodes"}));
    EXPECT_FALSE(connector.connected);
    EXPECT_FALSE(connector.running);
}

TEST_F(Connector, AFileNoReaderAcceptsGivesTheThreeReportsInStepOrderAndChangesNothing) {
    node.NodeRegistered();
    const std::string path = dir.File("notes.txt");
    std::ofstream(path) << "not a sound file\n";
    const app::NodeRef before = connector.connection.activeProducer;
    EXPECT_FALSE(connector.OpenFile(path));
    EXPECT_EQ(alerts.shown,
              (std::vector<std::string>{
                  "FATAL ERROR: couldn't find file reader node\n",
                  "FATAL ERROR: couldn't instantiate file reader node\n",
                  "FATAL ERROR: unable to SetRefFor() to read that sound file!\n"}));
    EXPECT_EQ(connector.connection.activeProducer, before);
    EXPECT_FALSE(connector.fileLoaded);
}

TEST_F(Connector, ASecondFileReplacesTheFirstWhichIsReleasedExactlyOnce) {
    node.NodeRegistered();
    ASSERT_TRUE(connector.OpenFile(Tone("first.wav", 0.5)));
    const app::NodeRef first = connector.connection.fileProducer;
    EXPECT_EQ(connector.connection.activeProducer, first);
    EXPECT_TRUE(connector.connected);
    EXPECT_FALSE(connector.running) << "a chosen file waits for PlayWave";
    EXPECT_EQ(connector.connection.format.raw.frameRate, 44100.0);

    ASSERT_TRUE(connector.OpenFile(Tone("second.wav", 0.5)));
    EXPECT_NE(connector.connection.fileProducer, first);
    EXPECT_EQ(connector.connection.activeProducer, connector.connection.fileProducer);
    EXPECT_EQ(connector.Find(first), nullptr);
    EXPECT_EQ(connector.Releases(), 1);
    EXPECT_EQ(connector.ReleasesOfNothing(), 0);
    EXPECT_EQ(connector.waveFileName, "second.wav");
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(Connector, PlayWaveStartsTheFileOnceAndAfterStopWaveStartsItAgainFromTheTop) {
    node.NodeRegistered();
    ASSERT_TRUE(connector.OpenFile(Tone("tone.wav", 2.0)));
    media::SoundFileProducer* file = File(connector.connection.fileProducer);
    ASSERT_NE(file, nullptr);

    connector.PlayWave();
    const int64_t startTime = connector.startTime;
    EXPECT_TRUE(connector.running);
    EXPECT_TRUE(connector.playWaveValue);
    EXPECT_FALSE(connector.playWaveEnabled);
    ASSERT_TRUE(WaitFor([&] { return file->Position() > 4410; }, 2.0));
    const int64_t playing = file->Position();
    connector.PlayWave(); // guarded by `running`: no rewind
    EXPECT_GE(file->Position(), playing);

    connector.StopWave();
    EXPECT_FALSE(connector.running);
    EXPECT_FALSE(file->Running());
    EXPECT_FALSE(connector.playWaveValue);
    EXPECT_TRUE(connector.playWaveEnabled);
    const int64_t stoppedAt = file->Position();
    EXPECT_GT(stoppedAt, 0);

    connector.PlayWave();
    EXPECT_EQ(connector.startTime, startTime) << "computed once per producer change";
    EXPECT_LT(file->Position(), stoppedAt) << "rewound to the first frame";
    EXPECT_TRUE(file->Running());
    connector.StopWave();
}

TEST(LiveWithoutAudio, SaysThereIsNoLiveInputAndStillPlaysASoundFile) {
    TempDir dir;
    const std::string path = dir.File("tone.wav");
    WriteSoundFile(path, Sine(440.0, 44100.0, 0.5), 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    KeptAlerts alerts;
    app::LiveSettings settings;
    settings.audio.jack = false;
    settings.audio.alsaDevice = "vocato_no_such_device";
    settings.audio.synth = false;
    settings.file = path;
    settings.verbose = true;
    app::LiveSession session(settings, alerts);
    std::string report;
    ASSERT_TRUE(session.Start(report)) << report;
    EXPECT_NE(report.find("No live input"), std::string::npos) << report;
    EXPECT_NE(report.find("\"vocato_no_such_device\""), std::string::npos) << report;

    char* printed = nullptr;
    size_t size = 0;
    std::FILE* out = open_memstream(&printed, &size);
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(WaitFor([&] { return session.FileFinished(); }, 3.0,
                        [&] { session.Tick(out, stderr); }));
    const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    session.Tick(out, stderr);
    std::fclose(out);
    const std::string notes(printed, size);
    std::free(printed);
    EXPECT_NE(notes.find("note on  A4 (69)"), std::string::npos) << notes;
    EXPECT_GT(took, 0.4) << "played in real time, not at once";
    // Alerts are the connector's: the live input failed before the file was chosen.
    EXPECT_TRUE(alerts.shown.empty());
}

} // namespace
} // namespace vocato::test
