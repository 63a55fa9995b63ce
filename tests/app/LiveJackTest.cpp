// Vocato on a private JACK server: a player sings the melody into its input, a recorder
// listens to its MIDI and synthesizer ports.
#include "LiveTestSupport.h"

#include "MidiSink.h"
#include "NodeAccess.h"
#include "NodeParameters.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocato::test {
namespace {

struct Decision {
    int key;
    int64_t sample; // index in the signal of the sample that completed the decision
};

class NoteOnCollector final : public media::MidiSink {
public:
    explicit NoteOnCollector(const VocatoNode& node) : node_(node) {}
    void Send(const media::MidiMessage& m, uint32_t) noexcept override {
        if (m.Status() == media::midi::kNoteOn && m.bytes[2] != 0) {
            decisions.push_back({m.bytes[1], bufferStart + node_.DecisionFrame()});
        }
    }
    std::vector<Decision> decisions;
    int64_t bufferStart = 0;

private:
    const VocatoNode& node_;
};

// The note-ons a fresh node decides for `signal` fed in buffers of `period` frames.
std::vector<Decision> OfflineNoteOns(const std::vector<float>& signal, uint32_t period) {
    media::DisplaySink window;
    VocatoNode node(&window, nullptr, "", 1, WithoutSynth());
    NoteOnCollector collector(node);
    node.AddMidiOutput(&collector);
    node.NodeRegistered();
    ConnectAudio(node, 1, 44100.0);
    node.Start(0);
    std::vector<int16_t> samples(period);
    for (size_t at = 0; at + period <= signal.size(); at += period) {
        for (uint32_t i = 0; i < period; ++i) {
            const float x = std::clamp(signal[at + i] * 32768.0f, -32768.0f, 32767.0f);
            samples[i] = static_cast<int16_t>(std::lrint(x));
        }
        media::Buffer buffer;
        buffer.data = samples.data();
        buffer.sizeUsed = period * sizeof(int16_t);
        collector.bufferStart = static_cast<int64_t>(at);
        node.BufferReceived(buffer);
    }
    return collector.decisions;
}

std::vector<RecordedEvent> NoteOns(const std::vector<RecordedEvent>& events) {
    std::vector<RecordedEvent> ons;
    std::copy_if(events.begin(), events.end(), std::back_inserter(ons), [](const RecordedEvent& e) {
        return (e.bytes[0] & 0xF0) == 0x90 && e.bytes[2] != 0;
    });
    return ons;
}

// From event `from` on, `key` ended and every channel got All Notes Off (123) and Reset All
// Controllers (121).
bool EndedAndSilenced(const std::vector<RecordedEvent>& events, size_t from, int key) {
    bool ended = false;
    int seen[16][2] = {};
    for (size_t i = from; i < events.size(); ++i) {
        const uint8_t status = events[i].bytes[0] & 0xF0;
        const uint8_t data = events[i].bytes[1];
        ended = ended ||
                (data == key && (status == 0x80 || (status == 0x90 && events[i].bytes[2] == 0)));
        if (status == 0xB0 && (data == 123 || data == 121)) {
            seen[events[i].bytes[0] & 0x0F][data == 123 ? 0 : 1] = 1;
        }
    }
    return ended &&
           std::all_of(std::begin(seen), std::end(seen), [](const int* c) { return c[0] && c[1]; });
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += what.size()) {
        ++n;
    }
    return n;
}

TEST_F(LiveJack, TheLiveInputFeedsTheNodeAMissingMidiPortIsReportedAndAFileChosenLaterWaits) {
    testing::internal::CaptureStdout();
    StartVocato(false, "nobody:midi_in");
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(Count(printed, "le producer n'est pas live\n"), 1u) << printed;
    EXPECT_NE(report.find("The MIDI port \"nobody:midi_in\" does not exist"), std::string::npos)
        << report;
    if (::access("/dev/snd/seq", F_OK) != 0) {
        EXPECT_EQ(Count(report, "No ALSA sequencer port"), 1u) << report;
        EXPECT_EQ(Count(report, "No ALSA sequencer port will be available: "), 1u) << report;
    }
    app::ProducerConnector& c = session->Connector();
    EXPECT_TRUE(c.connected && c.running && session->Audio().Feeding());
    EXPECT_EQ(c.connection.activeProducer, c.connection.producer);
    EXPECT_EQ(c.connection.format.type, media::MediaType::RawAudio);
    EXPECT_EQ(c.connection.format.raw.frameRate, 44100.0);
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:input", "system:capture_1"));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:synth_left", "system:playback_1"));
    EXPECT_TRUE(PortsConnected(server.Name(), "Vocato:synth_right", "system:playback_2"));

    TempDir dir;
    ASSERT_TRUE(c.OpenFile(WriteTone(dir, "tone.wav", 1.0)));
    EXPECT_TRUE(c.liveInput && c.connected);
    EXPECT_FALSE(c.running);
    EXPECT_FALSE(session->Audio().Feeding()) << "the live input is stopped";
    EXPECT_EQ(c.connection.activeProducer, c.connection.fileProducer);
    ASSERT_TRUE(c.ChangeProducer(c.connection.producer));
    EXPECT_TRUE(c.running && session->Audio().Feeding());
    EXPECT_EQ(c.Releases(), 1) << "the file producer, not the live input";
    EXPECT_EQ(c.ReleasesOfNothing(), 0);
    EXPECT_TRUE(alerts.shown.empty());
}

// The input meter's peak is taken once: silence before the melody (the dummy capture port is
// silent), the melody's peak once sung, and silence again after it.
TEST_F(LiveJack, TheMelodyReachesTheStoredMidiPortAtTheFramesTheNodeDecidesAndMetersAndSoundsIt) {
    StartVocato(true, "recorder:midi_in");
    EXPECT_NE(report.find("MIDI output connected to \"recorder:midi_in\""), std::string::npos)
        << report;
    app::LiveAudio& live = session->Audio();
    auto peakAfterAFewCycles = [&] {
        const uint64_t start = live.Jack()->Cycles();
        EXPECT_TRUE(Wait([&] { return live.Jack()->Cycles() > start + 4; }));
        return live.TakeInputPeak();
    };
    EXPECT_EQ(peakAfterAFewCycles(), 0.0f);
    ASSERT_TRUE(SingToEnd());
    float peak = 0.0f;
    for (float x : Melody()) {
        peak = std::max(peak, std::abs(x));
    }
    EXPECT_NEAR(live.TakeInputPeak(), peak, peak * 0.02f);
    // After an xrun the melody's last samples may reach the input a few cycles late.
    peakAfterAFewCycles();
    EXPECT_EQ(peakAfterAFewCycles(), 0.0f);
    const auto ons = NoteOns(recorder->Events());
    const auto expected = OfflineNoteOns(Melody(), 256);
    ASSERT_EQ(expected.size(), std::size(kMelodyKeys));
    ASSERT_EQ(ons.size(), expected.size());
    for (size_t i = 0; i < ons.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(ons[i].bytes[1], expected[i].key);
        EXPECT_EQ(ons[i].bytes[1], kMelodyKeys[i]);
        // Same cycle for player, Vocato and recorder: the note-on lands on the very frame
        // whose sample completed the decision.
        EXPECT_EQ(ons[i].frame - player->StartFrame(), expected[i].sample);
        EXPECT_EQ(ons[i].offset, static_cast<uint32_t>(expected[i].sample % 256));
    }
    // A4 is the last note: listen from 0.2 s after its note-on.
    const std::vector<float> audio = recorder->Audio();
    const int64_t from = ons[2].frame - recorder->AudioStartFrame() + 8820;
    ASSERT_GT(static_cast<int64_t>(audio.size()), from + 8192);
    const double hz = EstimatePitchHz(audio.data() + from, 8192, 44100.0);
    EXPECT_NEAR(Cents(hz, 440.0), 0.0, 30.0) << hz << " Hz";
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(LiveJack, NotesKeepComingAfterAPeriodChangeAndNoneHangsOnAPresetChangeOrAStop) {
    StartVocato(false);
    std::FILE* err = std::tmpfile();
    auto ons = [this] { return NoteOns(recorder->Events()); };
    player->Play();
    ASSERT_TRUE(Wait([&] { return !ons().empty(); }));
    ASSERT_EQ(std::system("jack_bufsize 128 >/dev/null 2>&1"), 0);
    ASSERT_TRUE(Wait([&] { return ons().size() >= 2; }, 5.0, err));
    EXPECT_EQ(session->Audio().Jack()->BufferSize(), 128u);

    size_t before = recorder->Events().size();
    const int key = ons().back().bytes[1];
    const int32_t preset = 3;
    session->Node().SetParameterValue(PARAM_PRESET, session->Node().Clock().NowMicros(), &preset,
                                      4);
    EXPECT_TRUE(Wait([&] { return EndedAndSilenced(recorder->Events(), before, key); }, 2.0, err));

    ASSERT_TRUE(Wait([&] { return ons().back().bytes[1] == 69; }, 5.0, err));
    before = recorder->Events().size();
    session->Connector().StopNodes();
    EXPECT_TRUE(Wait([&] { return EndedAndSilenced(recorder->Events(), before, 69); }, 2.0, err));
    EXPECT_EQ(session->Router().SoundingNotes(), 0);

    std::rewind(err);
    std::string printed(4096, '\0');
    printed.resize(std::fread(printed.data(), 1, printed.size(), err));
    std::fclose(err);
    EXPECT_NE(printed.find("JACK: the period is now 128 frames"), std::string::npos) << printed;
}

TEST_F(LiveJack, LosingTheServerMidNoteEndsTheNoteAndVocatoReconnectsToTheNextServer) {
    StartVocato(false);
    player->Play();
    ASSERT_TRUE(Wait([this] { return session->Router().SoundingNotes() > 0; }));
    const std::string name = server.Name();
    server.Kill(SIGKILL);
    ASSERT_TRUE(Wait([this] { return session->Audio().JackLost(); }));
    EXPECT_EQ(session->Router().SoundingNotes(), 0);
    EXPECT_TRUE(session->Connector().running) << "the live input stays chosen";
    // libjack frees the clients of a dead server when the next client opens.
    player.reset();
    recorder.reset();

    JackServer next(256, 44100, name);
    ASSERT_TRUE(next.Ready());
    ASSERT_TRUE(
        Wait([this] { return session->Audio().Active() == app::LiveAudio::Backend::Jack; }));
    EXPECT_TRUE(PortExists(name, "Vocato:input"));
    EXPECT_TRUE(session->Audio().Feeding());
    OpenClients();
    ConnectClients(true);
    ASSERT_TRUE(SingToEnd());
    const auto ons = NoteOns(recorder->Events());
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

} // namespace
} // namespace vocato::test
