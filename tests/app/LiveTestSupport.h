// What the live tests share: the melody they sing into Vocato, and Vocato on a private JACK
// server between a singing player and a recorder.
#pragma once

#include "LiveSession.h"

#include "Fixtures.h"
#include "JackServer.h"
#include "JackTestClients.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vocato::test {

// Three flute notes, C4 E4 A4, rendered at 44100 Hz with FluidSynth, peaks at -3 dBFS.
inline const std::vector<float>& Melody() {
    static const std::vector<float> melody =
        RenderMelody({{60, 0.10, 0.60}, {64, 0.80, 1.30}, {69, 1.50, 2.30}}, 73, 44100.0, 0.4);
    return melody;
}
inline constexpr int kMelodyKeys[] = {60, 64, 69};

inline NodeOptions WithoutSynth() {
    NodeOptions options;
    options.internalSynth = false;
    return options;
}

// Settings for a session on the test's JACK server only (no ALSA fallback).
inline app::LiveSettings JackOnlySettings(bool synth) {
    app::LiveSettings settings;
    settings.audio.alsa = false;
    settings.audio.synth = synth;
    settings.program = 73;
    return settings;
}

// Vocato on a private JACK server: a player sings into its input, a recorder listens to its
// MIDI and synthesizer ports.
class LiveJack : public ::testing::Test {
protected:
    // `midiPort`: the stored MIDI port, which Vocato connects itself; else the test does.
    void StartVocato(bool synth, const std::string& midiPort = "") {
        ASSERT_TRUE(server.Ready()) << "jackd (package jackd2) did not start";
        OpenClients();
        app::LiveSettings settings = JackOnlySettings(synth);
        settings.midiPort = midiPort;
        session = std::make_unique<app::LiveSession>(settings, alerts);
        ASSERT_TRUE(session->Start(report)) << report;
        ASSERT_EQ(session->Audio().Active(), app::LiveAudio::Backend::Jack) << report;
        ConnectClients(midiPort.empty());
    }
    void OpenClients() {
        player = std::make_unique<PlayerClient>("player", song);
        recorder = std::make_unique<RecorderClient>("recorder", 44100 * 6);
    }
    void ConnectClients(bool midi) {
        ASSERT_TRUE(player->Ok() && recorder->Ok());
        media::JackClient& jack = *session->Audio().Jack();
        ASSERT_TRUE(player->ConnectTo(jack.InputPortName()));
        ASSERT_TRUE(!midi || recorder->Connect(jack.MidiPortName(), recorder->MidiPort()));
        ASSERT_TRUE(recorder->Connect(jack.LeftPortName(), recorder->AudioPort()));
    }
    bool SingToEnd() {
        player->Play();
        return Wait([this] { return player->Done(); }, 10.0);
    }
    bool Wait(const std::function<bool()>& done, double seconds = 5.0, std::FILE* err = stderr) {
        return WaitFor(done, seconds, [&] { session->Tick(stdout, err); });
    }

    JackServer server;
    std::vector<float> song = Melody(); // what the player sings
    KeptAlerts alerts;
    std::string report;
    std::unique_ptr<PlayerClient> player;
    std::unique_ptr<RecorderClient> recorder;
    std::unique_ptr<app::LiveSession> session;
};

} // namespace vocato::test
