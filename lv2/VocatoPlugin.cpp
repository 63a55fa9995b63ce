#include "VocatoPlugin.h"

#include "SampleConversion.h"
#include "TrackerChoice.h"

#include "Diagnostics.h"

#include <lv2/urid/urid.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>

namespace vocato::lv2 {
namespace {

// The node re-bases its MIDI clock on the first buffer to the clock's time minus six seconds;
// starting the clock there puts the first sample at MIDI time 0, as the converter does.
constexpr int64_t kClockStartMicros = 6'000'000;

void* FindFeature(const LV2_Feature* const* features, const char* uri) {
    for (; features != nullptr && *features != nullptr; ++features) {
        if (std::strcmp((*features)->URI, uri) == 0) {
            return (*features)->data;
        }
    }
    return nullptr;
}

} // namespace

std::unique_ptr<VocatoPlugin> VocatoPlugin::Create(double rate,
                                                   const LV2_Feature* const* features) {
    auto* map = static_cast<LV2_URID_Map*>(FindFeature(features, LV2_URID__map));
    if (map == nullptr) {
        std::fprintf(stderr, "vocato.lv2: the host does not provide %s; not instantiated\n",
                     LV2_URID__map);
        return nullptr;
    }
    // Nobody reads the node's diagnostic lines inside a host; posting them would only fill
    // their queue from the audio thread.
    media::SetDiagnosticsQuiet(true);
    try {
        return std::make_unique<VocatoPlugin>(
            rate, map,
            static_cast<const LV2_Worker_Schedule*>(FindFeature(features, LV2_WORKER__schedule)));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vocato.lv2: cannot make the converter node: %s\n", e.what());
        return nullptr;
    }
}

VocatoPlugin::VocatoPlugin(double rate, LV2_URID_Map* map, const LV2_Worker_Schedule* schedule)
    // A host that does not know its rate (0, or worse) gets the node's own assumption, 44.1 kHz.
    : rate_(rate > 0.0 ? rate : 44100.0), schedule_(schedule), clock_(kClockStartMicros),
      sink_(map) {
    MakeNode(TrackerKindForPort(ControlPortAt(kTracker).defaultValue));
}

void VocatoPlugin::MakeNode(TrackerKind kind) {
    NodeOptions options;
    options.clock = &clock_;
    // The host plays the MIDI; the plugin has no synthesizer of its own.
    options.internalSynth = false;
    options.soundFonts.clear();
    options.trackerFactory = TrackerFactoryFor(kind);
    const FlavorInfo* flavor = nullptr;
    addOn_.GetFlavorAt(0, &flavor);
    std::unique_ptr<VocatoNode> node = addOn_.InstantiateNodeFor(flavor, std::move(options));
    node->NodeRegistered();

    int32_t cookie = 0;
    media::MediaInput input;
    node->GetNextInput(&cookie, &input);
    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    // A rate the tracker refuses leaves the node not ready, which Run answers with silence.
    format.raw.frameRate = rate_;
    format.raw.channelCount = 1;
    format.raw.format = media::SampleFormat::Int16;
    format.raw.bufferSize = sizeof frame_;
    node->AcceptFormat(input.destination, &format);
    node->Connected(media::MediaSource{0, 0}, input.destination, format, &input);
    node->AddMidiOutput(&sink_);
    std::lock_guard<std::mutex> lock(nodeSwap_);
    node_ = std::move(node);
    trackerKind_ = kind;
    controls_.Forget();
    frameFill_ = 0;
}

void VocatoPlugin::ConnectPort(uint32_t port, void* data) noexcept {
    switch (port) {
    case kAudioIn:
        audioIn_ = static_cast<const float*>(data);
        break;
    case kMidiOut:
        midiOut_ = static_cast<LV2_Atom_Sequence*>(data);
        break;
    case kLatency:
        latency_ = static_cast<float*>(data);
        break;
    default:
        if (port >= kFirstControl && port < kPortCount) {
            controls_.Connect(static_cast<PortIndex>(port), static_cast<const float*>(data));
        }
        break;
    }
}

void VocatoPlugin::Activate() {
    const TrackerKind wanted = TrackerKindForPort(controls_.Value(kTracker));
    if (wanted != trackerKind_) {
        try {
            MakeNode(wanted);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "vocato.lv2: keeping the running tracker: %s\n", e.what());
        }
    }
    node_->Maintain();
    node_->Start(clock_.NowMicros());
}

void VocatoPlugin::Work() {
    std::lock_guard<std::mutex> lock(nodeSwap_);
    node_->Maintain();
}

void VocatoPlugin::Deactivate() noexcept {
    node_->Stop(clock_.NowMicros(), true);
}

void VocatoPlugin::Run(uint32_t frames) noexcept {
    sink_.Begin(midiOut_);
    const bool presetRequested = controls_.Push(*node_, clock_.NowMicros());
    // Parameter changes take effect at frame 0 of this run, before any audio.
    node_->RunEvents();
    const bool ready = node_->EngineReady();
    if (ready && audioIn_ != nullptr) {
        Feed(audioIn_, frames);
    }
    if (latency_ != nullptr) {
        *latency_ = ready ? static_cast<float>(node_->DecisionDelaySamples()) : 0.0f;
    }
    sink_.End();
    // Last, since a host that is rendering offline may do the work before this returns.
    if (presetRequested && schedule_ != nullptr) {
        schedule_->schedule_work(schedule_->handle, 0, nullptr);
    }
}

void VocatoPlugin::Feed(const float* samples, uint32_t frames) noexcept {
    for (uint32_t i = 0; i < frames; ++i) {
        frame_[frameFill_++] = SampleToInt16(samples[i]);
        if (frameFill_ < frame_.size()) {
            continue;
        }
        frameFill_ = 0;
        // The node's decisions on this frame belong to the sample that completed it.
        sink_.SetFrame(i);
        media::Buffer buffer;
        buffer.data = frame_.data();
        buffer.sizeUsed = sizeof frame_;
        node_->BufferReceived(buffer);
        samplesFed_ += static_cast<int64_t>(frame_.size());
        clock_.Set(kClockStartMicros +
                   std::llround(static_cast<double>(samplesFed_) * 1e6 / rate_));
    }
}

} // namespace vocato::lv2
