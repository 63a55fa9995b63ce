// Vocato on a private JACK server: a player sings the melody into its input, a recorder
// listens to its MIDI and synthesizer ports.
#include "JackServer.h"
#include "JackTestClients.h"
#include "LiveTestSupport.h"

#include "Fixtures.h"
#include "NodeParameters.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <sndfile.h>

namespace vocato::test {
namespace {

using app::LiveSession;

constexpr uint8_t kNoteOn = 0x90;
constexpr uint8_t kNoteOff = 0x80;
constexpr uint8_t kControl = 0xB0;

std::vector<RecordedEvent> NoteOns(const std::vector<RecordedEvent>& events) {
    std::vector<RecordedEvent> ons;
    for (const RecordedEvent& e : events) {
        if ((e.bytes[0] & 0xF0) == kNoteOn && e.bytes[2] != 0) {
            ons.push_back(e);
        }
    }
    return ons;
}

bool EndsKey(const RecordedEvent& e, int key) {
    const uint8_t status = e.bytes[0] & 0xF0;
    return e.bytes[1] == key && (status == kNoteOff || (status == kNoteOn && e.bytes[2] == 0));
}

// Every channel got All Notes Off (123) and Reset All Controllers (121).
bool EveryChannelSilenced(const std::vector<RecordedEvent>& events, size_t from) {
    int seen[16][2] = {};
    for (size_t i = from; i < events.size(); ++i) {
        const RecordedEvent& e = events[i];
        if ((e.bytes[0] & 0xF0) == kControl && (e.bytes[1] == 123 || e.bytes[1] == 121)) {
            seen[e.bytes[0] & 0x0F][e.bytes[1] == 123 ? 0 : 1] = 1;
        }
    }
    for (const auto& channel : seen) {
        if (channel[0] == 0 || channel[1] == 0) {
            return false;
        }
    }
    return true;
}

class LiveJack : public ::testing::Test {
protected:
    void StartVocato(bool synth) {
        ASSERT_TRUE(server.Ready()) << "jackd (package jackd2) did not start";
        session = std::make_unique<LiveSession>(JackOnlySettings(synth), alerts);
        std::string report;
        ASSERT_TRUE(session->Start(report)) << report;
        ASSERT_EQ(session->Audio().Active(), app::LiveAudio::Backend::Jack) << report;
        media::JackClient& jack = *session->Audio().Jack();
        ASSERT_TRUE(player.Ok() && recorder.Ok());
        ASSERT_TRUE(player.ConnectTo(jack.InputPortName()));
        ASSERT_TRUE(recorder.Connect(jack.MidiPortName(), recorder.MidiPort()));
        ASSERT_TRUE(recorder.Connect(jack.LeftPortName(), recorder.AudioPort()));
    }
    void Tick() { session->Tick(stdout, stderr); }
    bool PlayToEnd() {
        player.Play();
        return WaitFor([this] { return player.Done(); }, 10.0, [this] { Tick(); });
    }

    JackServer server;
    KeptAlerts alerts;
    std::unique_ptr<PlayerClient> playerClient = std::make_unique<PlayerClient>("player", Melody());
    std::unique_ptr<RecorderClient> recorderClient =
        std::make_unique<RecorderClient>("recorder", 44100 * 6);
    PlayerClient& player = *playerClient;
    RecorderClient& recorder = *recorderClient;
    std::unique_ptr<LiveSession> session;
};

TEST_F(LiveJack, AtStartTheLiveInputIsConnectedAsRawAudioAndBothNodesRun) {
    testing::internal::CaptureStdout();
    StartVocato(false);
    const std::string printed = testing::internal::GetCapturedStdout();
    app::ProducerConnector& c = session->Connector();
    EXPECT_TRUE(c.connected);
    EXPECT_TRUE(c.running);
    EXPECT_TRUE(session->Audio().Feeding());
    EXPECT_EQ(c.connection.activeProducer, c.connection.producer);
    EXPECT_EQ(c.connection.format.type, media::MediaType::RawAudio);
    EXPECT_EQ(c.connection.format.raw.frameRate, 44100.0);
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:input", "system:capture_1"));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:synth_left", "system:playback_1"));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:synth_right", "system:playback_2"));
    size_t lines = 0;
    for (size_t at = 0; (at = printed.find("le producer n'est pas live\n", at)) != std::string::npos;
         ++at) {
        ++lines;
    }
    EXPECT_EQ(lines, 1u) << printed;
}

TEST_F(LiveJack, AFileChosenWhileLiveIsConnectedButWaitsAndTheLiveInputIsNeverReleased) {
    StartVocato(false);
    TempDir dir;
    const std::string path = dir.File("tone.wav");
    WriteSoundFile(path, Sine(440.0, 44100.0, 1.0), 44100, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    app::ProducerConnector& c = session->Connector();
    ASSERT_TRUE(c.OpenFile(path));
    EXPECT_TRUE(c.liveInput);
    EXPECT_TRUE(c.connected);
    EXPECT_FALSE(c.running);
    EXPECT_FALSE(session->Audio().Feeding()) << "the live input is stopped";
    EXPECT_EQ(c.connection.activeProducer, c.connection.fileProducer);

    ASSERT_TRUE(c.ChangeProducer(c.connection.producer));
    EXPECT_TRUE(c.running);
    EXPECT_TRUE(session->Audio().Feeding());
    EXPECT_EQ(c.Releases(), 1) << "the file producer, not the live input";
    EXPECT_EQ(c.ReleasesOfNothing(), 0);
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(LiveJack, TheMelodyComesOutAsNotesAtTheFramesTheNodeDecidesThem) {
    StartVocato(false);
    ASSERT_TRUE(PlayToEnd());
    WaitFor([] { return false; }, 0.1);
    const auto ons = NoteOns(recorder.Events());
    const auto expected = OfflineNoteOns(Melody(), 256);
    ASSERT_EQ(expected.size(), std::size(kMelodyKeys));
    ASSERT_EQ(ons.size(), expected.size());
    for (size_t i = 0; i < ons.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(ons[i].bytes[1], expected[i].key);
        EXPECT_EQ(ons[i].bytes[1], kMelodyKeys[i]);
        // Same cycle for player, Vocato and recorder: the note-on lands on the very frame
        // whose sample completed the decision.
        EXPECT_EQ(ons[i].frame - player.StartFrame(), expected[i].sample);
        EXPECT_EQ(ons[i].offset, static_cast<uint32_t>(expected[i].sample % 256));
    }
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(LiveJack, TheSynthesizerPortsSoundAtThePitchOfTheSungNote) {
    StartVocato(true);
    ASSERT_TRUE(PlayToEnd());
    const auto ons = NoteOns(recorder.Events());
    ASSERT_EQ(ons.size(), std::size(kMelodyKeys));
    const std::vector<float> audio = recorder.Audio();
    // A4 is the last note: listen from 0.2 s after its note-on.
    const int64_t from = ons[2].frame - recorder.AudioStartFrame() + 8820;
    ASSERT_GT(static_cast<int64_t>(audio.size()), from + 8192);
    const double hz = EstimatePitchHz(audio.data() + from, 8192, 44100.0);
    EXPECT_NEAR(Cents(hz, 440.0), 0.0, 30.0) << hz << " Hz";
}

TEST_F(LiveJack, StoppingMidNoteEndsItAndSilencesEveryChannelOnTheMidiPort) {
    StartVocato(false);
    player.Play();
    ASSERT_TRUE(WaitFor([this] { return !NoteOns(recorder.Events()).empty(); }, 5.0,
                        [this] { Tick(); }));
    const int key = NoteOns(recorder.Events()).front().bytes[1];
    const size_t before = recorder.Events().size();
    session->Connector().StopNodes();
    WaitFor([] { return false; }, 0.1);
    const auto events = recorder.Events();
    bool ended = false;
    for (size_t i = before; i < events.size(); ++i) {
        ended = ended || EndsKey(events[i], key);
    }
    EXPECT_TRUE(ended);
    EXPECT_TRUE(EveryChannelSilenced(events, before));
    EXPECT_EQ(session->Router().SoundingNotes(), 0);
}

TEST_F(LiveJack, APresetChangeMidNoteEndsTheNoteOnTheMidiPort) {
    StartVocato(false);
    player.Play();
    ASSERT_TRUE(WaitFor([this] { return !NoteOns(recorder.Events()).empty(); }, 5.0,
                        [this] { Tick(); }));
    const int key = NoteOns(recorder.Events()).front().bytes[1];
    const size_t before = recorder.Events().size();
    const int32_t preset = 3;
    session->Node().SetParameterValue(PARAM_PRESET, session->Node().Clock().NowMicros(), &preset,
                                      4);
    ASSERT_TRUE(WaitFor(
        [&] {
            const auto events = recorder.Events();
            for (size_t i = before; i < events.size(); ++i) {
                if (EndsKey(events[i], key)) {
                    return EveryChannelSilenced(events, before);
                }
            }
            return false;
        },
        2.0, [this] { Tick(); }));
}

TEST_F(LiveJack, LosingTheServerMidNoteEndsTheNoteAndVocatoReconnectsToTheNextServer) {
    StartVocato(false);
    player.Play();
    ASSERT_TRUE(WaitFor([this] { return session->Router().SoundingNotes() > 0; }, 5.0,
                        [this] { Tick(); }));
    const std::string name = server.Name();
    server.Kill(SIGKILL);
    ASSERT_TRUE(WaitFor([this] { return session->Audio().JackLost(); }, 5.0, [this] { Tick(); }));
    EXPECT_EQ(session->Router().SoundingNotes(), 0);
    EXPECT_TRUE(session->Connector().running) << "the live input stays chosen";
    // libjack frees the clients of a dead server when the next client opens.
    playerClient.reset();
    recorderClient.reset();

    JackServer next(256, 44100, name);
    ASSERT_TRUE(next.Ready());
    ASSERT_TRUE(WaitFor([this] { return session->Audio().Active() == app::LiveAudio::Backend::Jack; },
                        5.0, [this] { Tick(); }));
    EXPECT_TRUE(PortExists(name, "Vocato:input"));
    EXPECT_TRUE(session->Audio().Feeding());

    // The new server carries notes again.
    PlayerClient singer("singer", Melody());
    RecorderClient listener("listener", 44100);
    media::JackClient& jack = *session->Audio().Jack();
    ASSERT_TRUE(singer.ConnectTo(jack.InputPortName()));
    ASSERT_TRUE(listener.Connect(jack.MidiPortName(), listener.MidiPort()));
    singer.Play();
    ASSERT_TRUE(WaitFor([&] { return singer.Done(); }, 10.0, [this] { Tick(); }));
    const auto ons = NoteOns(listener.Events());
    ASSERT_EQ(ons.size(), std::size(kMelodyKeys));
    for (size_t i = 0; i < ons.size(); ++i) {
        EXPECT_EQ(ons[i].bytes[1], kMelodyKeys[i]);
    }
}

TEST_F(LiveJack, APeriodChangeMidMelodyIsReportedAndTheNotesKeepComing) {
    StartVocato(false);
    player.Play();
    ASSERT_TRUE(WaitFor([this] { return !NoteOns(recorder.Events()).empty(); }, 5.0,
                        [this] { Tick(); }));
    ASSERT_EQ(std::system(("jack_bufsize 128 >/dev/null 2>&1")), 0);
    std::FILE* err = std::tmpfile();
    ASSERT_TRUE(WaitFor([this] { return player.Done(); }, 10.0,
                        [&] { session->Tick(stdout, err); }));
    std::rewind(err);
    char line[256] = {};
    std::string printed;
    while (std::fgets(line, sizeof line, err) != nullptr) {
        printed += line;
    }
    std::fclose(err);
    EXPECT_NE(printed.find("JACK: the period is now 128 frames"), std::string::npos) << printed;
    EXPECT_EQ(session->Audio().Jack()->BufferSize(), 128u);
    const auto ons = NoteOns(recorder.Events());
    ASSERT_EQ(ons.size(), std::size(kMelodyKeys));
    for (size_t i = 0; i < ons.size(); ++i) {
        EXPECT_EQ(ons[i].bytes[1], kMelodyKeys[i]);
    }
}

TEST_F(LiveJack, VocatoLiveStopsCleanlyOnSigterm) {
    ASSERT_TRUE(server.Ready());
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(null, STDERR_FILENO);
        ::execl(VOCATO_EXE, VOCATO_EXE, "live", "--no-synth", "--quiet",
                static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ASSERT_TRUE(WaitFor([&] { return PortExists(server.Name(), "Vocato:midi_out"); }, 5.0));
    ::kill(pid, SIGTERM);
    int status = 0;
    ASSERT_TRUE(WaitFor([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 5.0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_FALSE(PortExists(server.Name(), "Vocato:midi_out"));
}

TEST_F(LiveJack, WithoutASequencerOneLineSaysSoAndEverythingElseRuns) {
    if (::access("/dev/snd/seq", F_OK) == 0) {
        GTEST_SKIP() << "this machine has an ALSA sequencer";
    }
    ASSERT_TRUE(server.Ready());
    session = std::make_unique<LiveSession>(JackOnlySettings(false), alerts);
    std::string report;
    ASSERT_TRUE(session->Start(report)) << report;
    size_t lines = 0;
    for (size_t at = 0; (at = report.find("No ALSA sequencer port", at)) != std::string::npos;
         ++at) {
        ++lines;
    }
    EXPECT_EQ(lines, 1u) << report;
    EXPECT_NE(report.find("No ALSA sequencer port will be available: "), std::string::npos);
    EXPECT_EQ(session->Audio().Active(), app::LiveAudio::Backend::Jack);
    EXPECT_TRUE(session->Connector().running);
}

TEST_F(LiveJack, TheStoredMidiPortNameConnectsTheOutputWhenThePortExists) {
    ASSERT_TRUE(server.Ready());
    app::LiveSettings settings = JackOnlySettings(false);
    settings.midiPort = recorder.MidiPort();
    session = std::make_unique<LiveSession>(settings, alerts);
    std::string report;
    ASSERT_TRUE(session->Start(report)) << report;
    EXPECT_NE(report.find("MIDI output connected to \"recorder:midi_in\""), std::string::npos)
        << report;
    session->Stop();

    settings.midiPort = "nobody:midi_in";
    session = std::make_unique<LiveSession>(settings, alerts);
    report.clear();
    ASSERT_TRUE(session->Start(report)) << report;
    EXPECT_NE(report.find("The MIDI port \"nobody:midi_in\" does not exist"), std::string::npos)
        << report;
}

} // namespace
} // namespace vocato::test
