// The internal General MIDI synthesizer: FluidSynth with a SoundFont, playing what the node
// sends and rendering into the caller's buffers (from a JACK process callback, later).
#pragma once

#include "MidiSink.h"

#include <cstddef>
#include <memory>
#include <string>

typedef struct _fluid_hashtable_t fluid_settings_t;
typedef struct _fluid_synth_t fluid_synth_t;

namespace vocato::media {

class FluidSynthSink final : public MidiSink {
public:
    // Not the audio thread. Null when FluidSynth cannot be set up at all.
    static std::unique_ptr<FluidSynthSink> Create(double sampleRate);
    ~FluidSynthSink() override;

    // Not the audio thread. Loads a SoundFont; on success the synthesizer starts playing what
    // it is sent. A failed load leaves it silent.
    bool LoadSoundFont(const std::string& path);
    bool Enabled() const noexcept { return enabled_; }

    // Audio thread. Plays at once; FluidSynth's note calls use preallocated voices.
    void Send(const MidiMessage& message, uint32_t stampMs) noexcept override;

    // Audio thread. Renders `frames` frames of stereo float audio.
    void Render(float* left, float* right, size_t frames) noexcept;

private:
    FluidSynthSink(fluid_settings_t* settings, fluid_synth_t* synth) noexcept
        : settings_(settings), synth_(synth) {}

    fluid_settings_t* settings_;
    fluid_synth_t* synth_;
    bool enabled_ = false;
};

} // namespace vocato::media
