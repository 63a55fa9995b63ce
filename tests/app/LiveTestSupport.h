// What the live tests share: an alert that keeps its reports, the melody they sing into
// Vocato, and where the node itself decides its notes when given the same audio offline.
#pragma once

#include "LiveSession.h"

#include "Alert.h"
#include "Fixtures.h"

#include <memory>
#include <string>
#include <vector>

namespace vocato::test {

class KeptAlerts final : public media::Alert {
public:
    void Show(std::string_view title, std::string_view text) override {
        shown.emplace_back(std::string(title) + ": " + std::string(text));
    }
    std::vector<std::string> shown;
};

// Three flute notes, C4 E4 A4, rendered at 44100 Hz with FluidSynth, peaks at -3 dBFS.
const std::vector<float>& Melody();
inline constexpr int kMelodyKeys[] = {60, 64, 69};

struct Decision {
    int key;
    int64_t sample; // index in the signal of the sample that completed the decision
};

// The note-ons a fresh node decides for `signal` fed in buffers of `period` frames.
std::vector<Decision> OfflineNoteOns(const std::vector<float>& signal, uint32_t period);

inline NodeOptions WithoutSynth() {
    NodeOptions options;
    options.internalSynth = false;
    return options;
}

// A 440 Hz sine as a 16-bit WAV file in `dir`; its path.
std::string WriteTone(const TempDir& dir, const std::string& name, double seconds);

// Settings for a session on the test's JACK server only (no ALSA fallback).
app::LiveSettings JackOnlySettings(bool synth);

} // namespace vocato::test
