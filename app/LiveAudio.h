// The live audio system: JACK when a server runs, otherwise ALSA capture with FluidSynth's
// own audio driver. It feeds the captured audio to one consumer, drains the router's queue
// into the JACK MIDI port and the synthesizer, and renders the synthesizer, all on the
// audio thread. A lost JACK server is noticed by Maintain, which reconnects later.
#pragma once

#include "LiveMidiRouter.h"

#include "AlsaCapture.h"
#include "Alert.h"
#include "FluidSynthSink.h"
#include "JackClient.h"
#include "Producer.h"
#include "SoundFontProbe.h"
#include "SynthAudioDriver.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace vocato::app {

struct LiveAudioOptions {
    bool jack = true;
    bool alsa = true;
    std::string jackServer; // empty: $JACK_DEFAULT_SERVER or the default server
    std::string clientName = "Vocato";
    std::string alsaDevice = "default";
    std::string synthDriver; // FluidSynth's audio driver without JACK; empty: the first that opens
    std::string synthDevice;
    bool synth = true;
    std::vector<std::string> soundFonts = media::SoundFontProbeList();
    // Not owned; null: standard error.
    media::Alert* alert = nullptr;
};

class LiveAudio final : public media::JackPeriodHandler,
                        public media::AlsaCaptureHandler,
                        public media::SynthAudioHandler {
public:
    enum class Backend { None, Jack, Alsa };
    enum class Event { None, Lost, Reconnected };

    static constexpr uint32_t kMaxFrames = 8192;

    LiveAudio(LiveMidiRouter& router, LiveAudioOptions options);
    ~LiveAudio() override;

    // Owner thread. Opens JACK, else ALSA. `report` tells what is used and what is missing;
    // false when there is no live input at all (sound files still play).
    bool Open(std::string& report);
    void Close();

    // Owner thread, now and then. Lost: the JACK server went away since the last call (every
    // note has been queued to end); Reconnected: a server answers again, or the server changed
    // its sample rate and Vocato reopened at the new one (the input must be connected anew).
    Event Maintain(std::string& report);

    // Any thread.
    Backend Active() const noexcept { return backend_; }
    bool JackLost() const noexcept { return jackLost_; }
    bool HasInput() const noexcept { return backend_ != Backend::None; }
    double InputRate() const noexcept;
    uint32_t InputPeriod() const noexcept;
    uint64_t Xruns() const noexcept;
    media::JackClient* Jack() const noexcept { return jack_.get(); }
    const LiveAudioOptions& Options() const noexcept { return options_; }

    // Owner thread, while not feeding: the consumer of the captured audio.
    void SetConsumer(media::BufferConsumer* consumer) noexcept { consumer_ = consumer; }
    // Owner thread. After StopFeeding returns, the audio thread no longer calls the consumer.
    void StartFeeding();
    void StopFeeding();
    bool Feeding() const noexcept { return feeding_.load(std::memory_order_acquire); }

    // Any thread; for a level meter that looks now and then. The largest |sample| of the fed
    // input since the last look, 1.0 at full scale; looking starts the next stretch at 0.
    float TakeInputPeak() noexcept { return inputPeak_.exchange(0.0f, std::memory_order_relaxed); }

    // Owner thread. Connects the MIDI output to a JACK MIDI input port of that name.
    bool ConnectJackMidi(const std::string& port);

    // Audio threads.
    void Period(const media::JackPeriod& period) noexcept override;
    void Captured(int16_t* samples, uint32_t frames) noexcept override;
    void Render(float* left, float* right, uint32_t frames) noexcept override;

private:
    bool OpenJack(std::string& report);
    bool OpenAlsa(std::string& report);
    void MakeSynth(double rate, std::string& report);
    void Feed(int16_t* samples, uint32_t frames, bool framed) noexcept;
    void KeepPeak(const int16_t* samples, uint32_t frames) noexcept;
    void Outputs(float* left, float* right, void* midiOut, uint32_t frames) noexcept;
    media::Alert& Alerts() { return options_.alert != nullptr ? *options_.alert : stderrAlert_; }

    LiveMidiRouter& router_;
    LiveAudioOptions options_;
    media::StderrAlert stderrAlert_;
    Backend backend_ = Backend::None;
    bool jackLost_ = false;
    std::chrono::steady_clock::time_point lastTry_{};
    std::unique_ptr<media::JackClient> jack_;
    std::unique_ptr<media::AlsaCapture> capture_;
    std::unique_ptr<media::SynthAudioDriver> synthDriver_;
    std::unique_ptr<media::FluidSynthSink> synth_;
    double synthRate_ = 0.0;
    uint32_t openedRate_ = 0;
    uint32_t reportedPeriod_ = 0;
    bool captureFailureReported_ = false;
    media::BufferConsumer* consumer_ = nullptr;
    std::atomic<bool> feeding_{false};
    std::atomic<float> inputPeak_{0.0f};
    static_assert(std::atomic<float>::is_always_lock_free);
    std::vector<int16_t> scratch_;
};

} // namespace vocato::app
