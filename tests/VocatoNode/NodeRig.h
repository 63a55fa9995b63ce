// A node on a manual clock with a scripted tracker, capturing every MIDI message it sends.
//
// The scripted tracker stands in for the engine where a test must pin the node's own logic
// to exact engine decisions (thresholds, order, transposition) that real audio cannot steer
// to the unit; it also logs the configuration the node feeds it. The closed-loop tests use
// the real engine.
#pragma once

#include "VocatoNode.h"

#include "MidiSink.h"

#include <cstring>
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
    WFETMidiOut idle{-1, -1, 0, 0, 127};          // once `outputs` is empty: nothing to send
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
        if (script_->outputs.empty()) {
            *out = script_->idle;
            return;
        }
        *out = script_->outputs.front();
        script_->outputs.pop_front();
    }
    uint32_t DecisionDelaySamples() const noexcept override { return 0; }

private:
    std::shared_ptr<TrackerScript> script_;
};

class CapturingSink final : public media::MidiSink {
public:
    struct Sent {
        media::MidiMessage message;
        uint32_t stamp;
    };
    void Send(const media::MidiMessage& message, uint32_t stamp) noexcept override {
        sent.push_back({message, stamp});
    }
    std::vector<media::MidiMessage> Messages() const {
        std::vector<media::MidiMessage> out;
        for (const Sent& s : sent) {
            out.push_back(s.message);
        }
        return out;
    }
    std::vector<Sent> sent;
};

struct NodeRig {
    explicit NodeRig(bool withWindow = true, int8_t channel = 1) {
        NodeOptions options;
        options.clock = &clock;
        options.internalSynth = false;
        options.trackerFactory = [s = script] { return std::make_unique<ScriptedTracker>(s); };
        node = std::make_unique<VocatoNode>(withWindow ? &window : nullptr, nullptr, "", channel,
                                            std::move(options));
        node->AddMidiOutput(&sink);
        node->NodeRegistered();
    }

    media::MediaInput Connect(uint32_t channels = 1, double rate = 44100.0) {
        int32_t cookie = 0;
        media::MediaInput input;
        node->GetNextInput(&cookie, &input);
        media::MediaFormat format;
        format.type = media::MediaType::RawAudio;
        format.raw.channelCount = channels;
        format.raw.frameRate = rate;
        format.raw.bufferSize = 4096;
        node->Connected({1, 1}, input.destination, format, &input);
        return input;
    }

    void SetFloat(int32_t id, float v) {
        node->SetParameterValue(id, clock.NowMicros(), &v, 4);
        node->RunEvents();
    }
    void SetInt(int32_t id, int32_t v) {
        node->SetParameterValue(id, clock.NowMicros(), &v, 4);
        node->RunEvents();
    }
    float GetFloat(int32_t id) const {
        int64_t when = 0;
        float v = 0;
        size_t size = 4;
        node->GetParameterValue(id, &when, &v, &size);
        return v;
    }
    int32_t GetInt(int32_t id) const {
        int64_t when = 0;
        int32_t v = 0;
        size_t size = 4;
        node->GetParameterValue(id, &when, &v, &size);
        return v;
    }
    int64_t LastChange(int32_t id) const {
        int64_t when = 0;
        int32_t v = 0;
        size_t size = 4;
        node->GetParameterValue(id, &when, &v, &size);
        return when;
    }

    void Feed(std::vector<int16_t> samples, size_t bytes) {
        media::Buffer buffer;
        buffer.data = samples.data();
        buffer.sizeUsed = bytes;
        node->BufferReceived(buffer);
    }
    void Feed(std::vector<int16_t> samples) {
        const size_t bytes = samples.size() * 2;
        Feed(std::move(samples), bytes);
    }

    media::ManualClock clock{10'000'000};
    media::DisplaySink window;
    std::shared_ptr<TrackerScript> script = std::make_shared<TrackerScript>();
    CapturingSink sink;
    std::unique_ptr<VocatoNode> node;
};

inline WFETMidiOut Decision(int16_t off, int16_t on, int16_t velocity, int16_t bend,
                            int16_t expression) {
    return {off, on, velocity, bend, expression};
}

} // namespace vocato::test
