#include "LiveAudio.h"

#include "JackMidiWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <thread>

namespace vocato::app {
namespace {

constexpr double kAlsaRate = 44100.0;
constexpr uint32_t kAlsaPeriod = 256;
constexpr auto kReconnectInterval = std::chrono::seconds(1);

int16_t ToInt16(float x) noexcept {
    const float scaled = std::clamp(x * 32768.0f, -32768.0f, 32767.0f);
    return static_cast<int16_t>(std::lrint(scaled));
}

} // namespace

LiveAudio::LiveAudio(LiveMidiRouter& router, LiveAudioOptions options)
    : router_(router), options_(std::move(options)), scratch_(kMaxFrames) {}

LiveAudio::~LiveAudio() { Close(); }

bool LiveAudio::Open(std::string& report) {
    if (options_.jack && OpenJack(report)) {
        return true;
    }
    return OpenAlsa(report);
}

void LiveAudio::Close() {
    feeding_ = false;
    router_.SetAudioSide(false);
    jack_.reset();
    capture_.reset();
    synthDriver_.reset();
    synth_.reset();
    backend_ = Backend::None;
}

bool LiveAudio::OpenJack(std::string& report) {
    std::string error;
    media::JackClient::Options jackOptions;
    jackOptions.clientName = options_.clientName;
    jackOptions.serverName = options_.jackServer;
    auto client = media::JackClient::Open(jackOptions, *this, error);
    if (client == nullptr) {
        report += "JACK: " + error + "\n";
        return false;
    }
    // The synthesizer must exist before the process callback may use it.
    MakeSynth(client->SampleRate(), report);
    router_.SetAudioSide(true);
    jack_ = std::move(client);
    if (!jack_->Activate(error)) {
        report += "JACK: " + error + "\n";
        jack_.reset();
        router_.SetAudioSide(false);
        return false;
    }
    backend_ = Backend::Jack;
    openedRate_ = jack_->SampleRate();
    reportedPeriod_ = jack_->BufferSize();
    const std::string refused = jack_->ConnectSystemPorts();
    if (!refused.empty()) {
        report += "JACK: " + refused + " (connect them by hand)\n";
    }
    report += "JACK: " + std::to_string(jack_->SampleRate()) + " Hz, " +
              std::to_string(jack_->BufferSize()) + " frames per period; ports " +
              jack_->InputPortName() + ", " + jack_->MidiPortName() + "\n";
    return true;
}

bool LiveAudio::OpenAlsa(std::string& report) {
    std::string error;
    if (options_.alsa) {
        capture_ = media::AlsaCapture::Open(options_.alsaDevice, kAlsaRate, kAlsaPeriod, error);
        if (capture_ == nullptr) {
            report += error + "\n";
        } else {
            backend_ = Backend::Alsa;
            report += "ALSA: capturing from \"" + options_.alsaDevice + "\" at " +
                      std::to_string(capture_->SampleRate()) + " Hz\n";
        }
    }
    const double rate = capture_ != nullptr ? capture_->SampleRate() : kAlsaRate;
    MakeSynth(rate, report);
    if (synth_ != nullptr) {
        router_.SetAudioSide(true);
        synthDriver_ = media::SynthAudioDriver::Open(rate, options_.synthDriver,
                                                     options_.synthDevice, *this, error);
        if (synthDriver_ == nullptr) {
            router_.SetAudioSide(false);
            synth_.reset();
            report += "The synthesizer is silent: " + error + "\n";
        } else {
            report += "The synthesizer plays through FluidSynth's " + synthDriver_->Name() +
                      " driver\n";
        }
    }
    if (backend_ == Backend::None) {
        report += "No live input: no JACK server runs and no ALSA capture device opens; "
                  "sound files still play\n";
        return false;
    }
    return true;
}

void LiveAudio::MakeSynth(double rate, std::string& report) {
    if (!options_.synth || (synth_ != nullptr && synthRate_ == rate)) {
        return;
    }
    synth_.reset();
    const auto file = media::FindSoundFont(options_.soundFonts);
    if (!file) {
        report += "The synthesizer is silent: no General MIDI SoundFont is installed\n";
        return;
    }
    auto synth = media::FluidSynthSink::Create(rate);
    if (synth == nullptr) {
        report += "The synthesizer is silent: FluidSynth cannot be set up\n";
        return;
    }
    if (!synth->LoadSoundFont(*file)) {
        Alerts().Show("Synthfile Error", "No synthfile for synthesizer");
        return;
    }
    synth_ = std::move(synth);
    synthRate_ = rate;
    report += "Synthesizer: " + *file + "\n";
}

LiveAudio::Event LiveAudio::Maintain(std::string& report) {
    if (backend_ == Backend::Jack && jack_->Lost()) {
        report = "The JACK server has gone (" + jack_->LostReason() +
                 "); every note was ended. Vocato keeps running and reconnects when a "
                 "server answers again.";
        feeding_ = false;
        jack_.reset();
        backend_ = Backend::None;
        jackLost_ = true;
        lastTry_ = std::chrono::steady_clock::now();
        // What was queued for the lost port is void; the note-offs wait for the synthesizer.
        router_.DiscardQueued();
        router_.Silence();
        return Event::Lost;
    }
    if (backend_ == Backend::Jack && jack_->SampleRate() != openedRate_) {
        // The engine, the MIDI clock and the synthesizer all depend on the rate: start over.
        report = "The JACK server now runs at " + std::to_string(jack_->SampleRate()) +
                 " Hz; Vocato reopens at that rate.\n";
        feeding_ = false;
        jack_.reset();
        backend_ = Backend::None;
        router_.DiscardQueued();
        router_.Silence();
        std::string opened;
        if (!OpenJack(opened)) {
            jackLost_ = true;
            report += opened;
            return Event::Lost;
        }
        report += opened;
        return Event::Reconnected;
    }
    if (backend_ == Backend::Alsa && capture_->Failed() && !captureFailureReported_) {
        captureFailureReported_ = true;
        report = "The ALSA capture device \"" + options_.alsaDevice +
                 "\" failed; the live input is silent. Sound files still play.\n";
    }
    if (backend_ == Backend::Jack && jack_->BufferSize() != reportedPeriod_) {
        reportedPeriod_ = jack_->BufferSize();
        report = "JACK: the period is now " + std::to_string(reportedPeriod_) + " frames\n";
    }
    const auto now = std::chrono::steady_clock::now();
    if (jackLost_ && now - lastTry_ >= kReconnectInterval) {
        lastTry_ = now;
        std::string opened;
        if (OpenJack(opened)) {
            jackLost_ = false;
            report = "Reconnected to the JACK server.\n" + opened;
            return Event::Reconnected;
        }
    }
    return Event::None;
}

double LiveAudio::InputRate() const noexcept {
    switch (backend_) {
    case Backend::Jack: return jack_->SampleRate();
    case Backend::Alsa: return capture_->SampleRate();
    case Backend::None: break;
    }
    return 0.0;
}

uint32_t LiveAudio::InputPeriod() const noexcept {
    switch (backend_) {
    case Backend::Jack: return jack_->BufferSize();
    case Backend::Alsa: return capture_->PeriodFrames();
    case Backend::None: break;
    }
    return 0;
}

uint64_t LiveAudio::Xruns() const noexcept {
    switch (backend_) {
    case Backend::Jack: return jack_->Xruns();
    case Backend::Alsa: return capture_->Overruns();
    case Backend::None: break;
    }
    return 0;
}

void LiveAudio::StartFeeding() {
    feeding_.store(true, std::memory_order_release);
    if (backend_ == Backend::Alsa) {
        capture_->Start(*this);
    }
}

void LiveAudio::StopFeeding() {
    feeding_.store(false, std::memory_order_release);
    if (backend_ == Backend::Alsa) {
        capture_->Stop();
        return;
    }
    if (backend_ != Backend::Jack) {
        return;
    }
    // A cycle that began before the flag changed may still be feeding; the one after it is not.
    const uint64_t start = jack_->Cycles();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (jack_->Cycles() < start + 2 && !jack_->Lost() &&
           std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

bool LiveAudio::ConnectJackMidi(const std::string& port) {
    return backend_ == Backend::Jack && jack_->ConnectMidiTo(port);
}

void LiveAudio::KeepPeak(const int16_t* samples, uint32_t frames) noexcept {
    int largest = 0;
    for (uint32_t i = 0; i < frames; ++i) {
        largest = std::max(largest, std::abs(static_cast<int>(samples[i])));
    }
    const float level = static_cast<float>(largest) / 32768.0f;
    // A compare-exchange, not a store: a meter's look in between must not be undone.
    float kept = inputPeak_.load(std::memory_order_relaxed);
    while (level > kept &&
           !inputPeak_.compare_exchange_weak(kept, level, std::memory_order_relaxed)) {
    }
}

void LiveAudio::Feed(int16_t* samples, uint32_t frames, bool framed) noexcept {
    KeepPeak(samples, frames);
    if (consumer_ == nullptr) {
        return;
    }
    media::Buffer buffer;
    buffer.type = media::BufferType::RawAudio;
    buffer.data = samples;
    buffer.sizeUsed = static_cast<size_t>(frames) * sizeof(int16_t);
    router_.SetNodeOnAudioSide(framed);
    consumer_->BufferReceived(buffer);
    router_.SetNodeOnAudioSide(false);
}

void LiveAudio::Period(const media::JackPeriod& period) noexcept {
    if (feeding_.load(std::memory_order_acquire)) {
        const uint32_t frames = std::min(period.frames, kMaxFrames);
        for (uint32_t i = 0; i < frames; ++i) {
            scratch_[i] = ToInt16(period.input[i]);
        }
        Feed(scratch_.data(), frames, true);
    }
    Outputs(period.left, period.right, period.midiOut, period.frames);
}

void LiveAudio::Captured(int16_t* samples, uint32_t frames) noexcept {
    if (feeding_.load(std::memory_order_acquire)) {
        Feed(samples, frames, false);
    }
}

void LiveAudio::Render(float* left, float* right, uint32_t frames) noexcept {
    Outputs(left, right, nullptr, frames);
}

void LiveAudio::Outputs(float* left, float* right, void* midiOut, uint32_t frames) noexcept {
    media::JackMidiWriter writer(midiOut, frames);
    QueuedMidi event;
    while (router_.Next(event)) {
        writer.Write(event.frame, event.message);
        if (synth_ != nullptr) {
            synth_->Send(event.message, 0);
        }
    }
    if (synth_ != nullptr && synth_->Enabled()) {
        synth_->Render(left, right, frames);
    } else {
        std::fill(left, left + frames, 0.0f);
        std::fill(right, right + frames, 0.0f);
    }
}

} // namespace vocato::app
