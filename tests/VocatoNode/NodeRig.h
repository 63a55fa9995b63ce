// A node on a manual clock, capturing every MIDI message it sends. By default a scripted
// tracker stands in for the engine: it pins the node's own logic to exact engine decisions that
// real audio cannot steer to the unit, and logs the configuration the node feeds it.
#pragma once

#include "NodeAccess.h"
#include "VocatoNode.h"

#include "MidiSink.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace vocato::test {

struct TrackerScript {
    std::vector<std::pair<int16_t, double>> sets; // every Set call, all trackers
    std::vector<uint32_t> processedBytes;         // every Process call
    std::vector<int16_t> firstSamples;            // the first sample of every Process call
    std::deque<WFETMidiOut> outputs;              // decisions to give, one per Calc
    int created = 0;
    int destroyed = 0;
    const void* lastConfigured = nullptr; // the tracker that received the latest Set
};

class ScriptedTracker final : public PitchTracker {
public:
    explicit ScriptedTracker(std::shared_ptr<TrackerScript> script) : script_(std::move(script)) {
        ++script_->created;
    }
    ~ScriptedTracker() override { ++script_->destroyed; }
    int32_t Set(int16_t code, double value) noexcept override {
        script_->sets.emplace_back(code, value);
        script_->lastConfigured = this;
        // The engine's own range for the sample rate, so the node can tell a refused rate.
        return code == WFET_SAMPLE_RATE && !(value > 4000 && value < 200000) ? WFET_REJECTED
                                                                             : WFET_ACCEPTED;
    }
    void Process(const int16_t* samples, uint32_t byteCount) noexcept override {
        script_->processedBytes.push_back(byteCount);
        script_->firstSamples.push_back(byteCount >= 2 ? samples[0] : 0);
    }
    void Calc(WFETMidiOut* out) noexcept override {
        *out = script_->outputs.empty() ? WFETMidiOut{-1, -1, 0, 0, 127} : script_->outputs.front();
        if (!script_->outputs.empty()) {
            script_->outputs.pop_front();
        }
    }
    uint32_t DecisionDelaySamples() const noexcept override { return 0; }

private:
    std::shared_ptr<TrackerScript> script_;
};

struct CapturingSink final : media::MidiSink {
    void Send(const media::MidiMessage& message, uint32_t stamp) noexcept override {
        sent.push_back(message);
        stamps.push_back(stamp);
    }
    void Clear() {
        sent.clear();
        stamps.clear();
    }
    std::vector<media::MidiMessage> sent;
    std::vector<uint32_t> stamps;
};

struct RigSetup {
    int8_t channel = 1;
    bool scripted = true; // false: the real engine
    bool synth = false;
    int16_t median = 0;
    int16_t confirm = 0;
};

struct NodeRig {
    explicit NodeRig(RigSetup setup = {}) {
        NodeOptions options;
        options.clock = &clock;
        options.internalSynth = setup.synth;
        options.median = setup.median;
        options.confirm = setup.confirm;
        if (setup.scripted) {
            options.trackerFactory = [s = script] { return std::make_unique<ScriptedTracker>(s); };
        }
        node =
            std::make_unique<VocatoNode>(&window, nullptr, "", setup.channel, std::move(options));
        node->AddMidiOutput(&sink);
        node->NodeRegistered();
    }

    media::MediaInput Connect(uint32_t channels = 1, double rate = 44100.0) {
        return ConnectAudio(*node, channels, rate);
    }
    void ConnectAndStart(uint32_t channels = 1, double rate = 44100.0) {
        Connect(channels, rate);
        node->Start(0);
    }
    // Program and preset take int32_t, every other parameter float.
    template <typename T> void Set(int32_t id, T v) {
        node->SetParameterValue(id, clock.NowMicros(), &v, 4);
        node->RunEvents();
    }
    float Get(int32_t id) const { return ParameterValue(*node, id); }
    int64_t When(int32_t id) const {
        int64_t when = 0;
        int32_t v = 0;
        size_t size = 4;
        node->GetParameterValue(id, &when, &v, &size);
        return when;
    }
    void Feed(std::vector<int16_t> samples, size_t bytes = ~size_t{0}) {
        media::Buffer buffer;
        buffer.data = samples.data();
        buffer.sizeUsed = std::min(bytes, samples.size() * 2);
        node->BufferReceived(buffer);
    }

    media::ManualClock clock{10'000'000};
    media::DisplaySink window;
    std::shared_ptr<TrackerScript> script = std::make_shared<TrackerScript>();
    CapturingSink sink;
    std::unique_ptr<VocatoNode> node;
};

} // namespace vocato::test
