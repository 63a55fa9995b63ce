#include "SynthAudioDriver.h"

#include "AudioThread.h"

#include <fluidsynth.h>

#include <algorithm>

namespace vocato::media {

std::vector<std::string> SynthAudioDriver::DriverNames() {
    return {"alsa", "pipewire", "pulseaudio"};
}

std::unique_ptr<SynthAudioDriver> SynthAudioDriver::Open(double sampleRate,
                                                         const std::string& driver,
                                                         const std::string& device,
                                                         SynthAudioHandler& handler,
                                                         std::string& error) {
    const std::vector<std::string> names =
        driver.empty() ? DriverNames() : std::vector<std::string>{driver};
    std::string tried;
    for (const std::string& name : names) {
        std::unique_ptr<SynthAudioDriver> self(new SynthAudioDriver);
        self->handler_ = &handler;
        self->name_ = name;
        self->settings_ = new_fluid_settings();
        if (self->settings_ == nullptr) {
            break;
        }
        fluid_settings_setstr(self->settings_, "audio.driver", name.c_str());
        fluid_settings_setnum(self->settings_, "synth.sample-rate", sampleRate);
        fluid_settings_setint(self->settings_, "audio.period-size", 256);
        if (!device.empty()) {
            fluid_settings_setstr(self->settings_, ("audio." + name + ".device").c_str(),
                                  device.c_str());
        }
        self->driver_ =
            new_fluid_audio_driver2(self->settings_, &SynthAudioDriver::Callback, self.get());
        if (self->driver_ != nullptr) {
            return self;
        }
        tried += tried.empty() ? name : ", " + name;
    }
    error = "no audio output for the synthesizer (tried " + tried + ")";
    return nullptr;
}

SynthAudioDriver::~SynthAudioDriver() {
    if (driver_ != nullptr) {
        delete_fluid_audio_driver(driver_);
    }
    if (settings_ != nullptr) {
        delete_fluid_settings(settings_);
    }
}

int SynthAudioDriver::Callback(void* arg, int len, int, float*[], int nout, float* out[]) {
    AudioThreadScope audio;
    auto* self = static_cast<SynthAudioDriver*>(arg);
    if (nout < 2 || len <= 0) {
        return 0;
    }
    std::fill(out[0], out[0] + len, 0.0f);
    std::fill(out[1], out[1] + len, 0.0f);
    self->handler_->Render(out[0], out[1], static_cast<uint32_t>(len));
    return 0;
}

} // namespace vocato::media
