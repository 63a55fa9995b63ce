// The synthesizer's way to the speakers when there is no JACK server: FluidSynth's own audio
// driver (ALSA, PipeWire or PulseAudio, first that opens), which calls back for every period
// on its own thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

typedef struct _fluid_hashtable_t fluid_settings_t;
typedef struct _fluid_audio_driver_t fluid_audio_driver_t;

namespace vocato::media {

class SynthAudioHandler {
public:
    virtual ~SynthAudioHandler() = default;
    // The driver's thread: fill both channels with `frames` frames.
    virtual void Render(float* left, float* right, uint32_t frames) noexcept = 0;
};

class SynthAudioDriver {
public:
    // The drivers tried, in order, when none is named.
    static std::vector<std::string> DriverNames();

    // Not the audio thread. `driver` empty: the first of DriverNames() that opens; `device`
    // empty: the driver's default. Null with one sentence in `error` naming what was tried.
    static std::unique_ptr<SynthAudioDriver> Open(double sampleRate, const std::string& driver,
                                                  const std::string& device,
                                                  SynthAudioHandler& handler, std::string& error);
    ~SynthAudioDriver();
    SynthAudioDriver(const SynthAudioDriver&) = delete;
    SynthAudioDriver& operator=(const SynthAudioDriver&) = delete;

    const std::string& Name() const noexcept { return name_; }

private:
    SynthAudioDriver() = default;
    static int Callback(void* self, int len, int nfx, float* fx[], int nout, float* out[]);

    fluid_settings_t* settings_ = nullptr;
    fluid_audio_driver_t* driver_ = nullptr;
    SynthAudioHandler* handler_ = nullptr;
    std::string name_;
};

} // namespace vocato::media
