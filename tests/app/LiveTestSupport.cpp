#include "LiveTestSupport.h"

#include "MidiSink.h"
#include "NodeAccess.h"
#include "VocatoNode.h"

#include <algorithm>
#include <cmath>

namespace vocato::test {
namespace {

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

} // namespace

const std::vector<float>& Melody() {
    static const std::vector<float> melody =
        RenderMelody({{60, 0.10, 0.60}, {64, 0.80, 1.30}, {69, 1.50, 2.30}}, 73, 44100.0, 0.4);
    return melody;
}

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

app::LiveSettings JackOnlySettings(bool synth) {
    app::LiveSettings settings;
    settings.audio.alsa = false;
    settings.audio.synth = synth;
    settings.program = 73;
    return settings;
}

} // namespace vocato::test
