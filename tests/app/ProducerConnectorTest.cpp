// The producer connection without a window: failure reports and their order, producers
// released exactly once, and PlayWave / StopWave on a real sound-file producer. The live
// input here has no audio system behind it, so it has no free output.
#include "LiveTestSupport.h"

#include "SoundFileProducer.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vocato::test {
namespace {

using Reports = std::vector<std::string>;

class Connector : public ::testing::Test {
protected:
    void SetUp() override { node.NodeRegistered(); }
    static app::LiveAudioOptions NoAudioSystem() {
        app::LiveAudioOptions options;
        options.jack = options.alsa = options.synth = false;
        return options;
    }

    TempDir dir;
    KeptAlerts alerts;
    media::DisplaySink window;
    VocatoNode node{&window, nullptr, "", 1, WithoutSynth()};
    app::LiveMidiRouter router{node};
    app::LiveAudio audio{router, NoAudioSystem()};
    app::LiveInput live{audio};
    app::ProducerConnector connector{live, node, &router, alerts};
};

TEST_F(Connector, EachFailureGivesItsReportsInStepOrderAndChangesNothing) {
    EXPECT_FALSE(connector.ConnectToNode(&connector.connection.producer));
    EXPECT_EQ(alerts.shown,
              (Reports{"FATAL ERROR: unable to get a free output from the producer node",
                       "FATAL ERROR: unable to connect nodes"}));
    EXPECT_FALSE(connector.connected || connector.running);

    alerts.shown.clear();
    std::ofstream(dir.File("notes.txt")) << "not a sound file\n";
    const app::NodeRef before = connector.connection.activeProducer;
    EXPECT_FALSE(connector.OpenFile(dir.File("notes.txt")));
    EXPECT_EQ(alerts.shown,
              (Reports{"FATAL ERROR: couldn't find file reader node\n",
                       "FATAL ERROR: couldn't instantiate file reader node\n",
                       "FATAL ERROR: unable to SetRefFor() to read that sound file!\n"}));
    EXPECT_EQ(connector.connection.activeProducer, before);
    EXPECT_FALSE(connector.fileLoaded);
}

TEST_F(Connector, ASecondFileReplacesTheFirstOnceAndPlayWaveRestartsItFromTheTopAfterStopWave) {
    ASSERT_TRUE(connector.OpenFile(WriteTone(dir, "first.wav", 0.5)));
    const app::NodeRef first = connector.connection.fileProducer;
    EXPECT_EQ(connector.connection.activeProducer, first);
    EXPECT_TRUE(connector.connected);
    EXPECT_FALSE(connector.running) << "a chosen file waits for PlayWave";
    EXPECT_EQ(connector.connection.format.raw.frameRate, 44100.0);
    ASSERT_TRUE(connector.OpenFile(WriteTone(dir, "second.wav", 2.0)));
    EXPECT_NE(connector.connection.fileProducer, first);
    EXPECT_EQ(connector.connection.activeProducer, connector.connection.fileProducer);
    EXPECT_EQ(connector.Find(first), nullptr);
    EXPECT_EQ(connector.Releases(), 1);
    EXPECT_EQ(connector.ReleasesOfNothing(), 0);
    EXPECT_EQ(connector.waveFileName, "second.wav");
    EXPECT_TRUE(alerts.shown.empty());

    auto* file =
        dynamic_cast<media::SoundFileProducer*>(connector.Find(connector.connection.fileProducer));
    ASSERT_NE(file, nullptr);
    connector.PlayWave();
    const int64_t startTime = connector.startTime;
    EXPECT_TRUE(connector.running && connector.playWaveValue);
    EXPECT_FALSE(connector.playWaveEnabled);
    ASSERT_TRUE(WaitFor([&] { return file->Position() > 4410; }, 2.0));
    const int64_t playing = file->Position();
    connector.PlayWave(); // guarded by `running`: no rewind
    EXPECT_GE(file->Position(), playing);
    connector.StopWave();
    EXPECT_FALSE(connector.running || file->Running() || connector.playWaveValue);
    EXPECT_TRUE(connector.playWaveEnabled);
    const int64_t stoppedAt = file->Position();
    EXPECT_GT(stoppedAt, 0);
    connector.PlayWave();
    EXPECT_EQ(connector.startTime, startTime) << "computed once per producer change";
    EXPECT_LT(file->Position(), stoppedAt) << "rewound to the first frame";
    EXPECT_TRUE(file->Running());
    connector.StopWave();
}

} // namespace
} // namespace vocato::test
