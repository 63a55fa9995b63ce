#include "FluidSynthSink.h"

#include <fluidsynth.h>

namespace vocato::media {
namespace {

// FluidSynth logs through a process-wide handler; its messages would duplicate the node's own
// report of a failed SoundFont, so they are dropped.
void SilenceFluidSynthLog() {
    for (int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG}) {
        fluid_set_log_function(level, nullptr, nullptr);
    }
}

} // namespace

std::unique_ptr<FluidSynthSink> FluidSynthSink::Create(double sampleRate) {
    SilenceFluidSynthLog();
    fluid_settings_t* settings = new_fluid_settings();
    if (settings == nullptr) {
        return nullptr;
    }
    fluid_settings_setnum(settings, "synth.sample-rate", sampleRate);
    // Dry output: what the node plays should sound as it is, and tests measure its pitch.
    fluid_settings_setint(settings, "synth.reverb.active", 0);
    fluid_settings_setint(settings, "synth.chorus.active", 0);
    // One thread at a time plays and renders (the node thread, or a JACK callback that does
    // both); FluidSynth's own API lock would otherwise be taken on the audio thread.
    fluid_settings_setint(settings, "synth.threadsafe-api", 0);
    fluid_synth_t* synth = new_fluid_synth(settings);
    if (synth == nullptr) {
        delete_fluid_settings(settings);
        return nullptr;
    }
    return std::unique_ptr<FluidSynthSink>(new FluidSynthSink(settings, synth));
}

FluidSynthSink::~FluidSynthSink() {
    delete_fluid_synth(synth_);
    delete_fluid_settings(settings_);
}

bool FluidSynthSink::LoadSoundFont(const std::string& path) {
    enabled_ = fluid_synth_sfload(synth_, path.c_str(), 1) != FLUID_FAILED;
    return enabled_;
}

void FluidSynthSink::Send(const MidiMessage& message, uint32_t) noexcept {
    if (!enabled_) {
        return;
    }
    const int channel = message.bytes[0] & 0x0F;
    const int a = message.bytes[1];
    const int b = message.bytes[2];
    switch (message.Status()) {
    case midi::kNoteOff:
        fluid_synth_noteoff(synth_, channel, a);
        break;
    case midi::kNoteOn:
        if (b == 0) {
            fluid_synth_noteoff(synth_, channel, a);
        } else {
            fluid_synth_noteon(synth_, channel, a, b);
        }
        break;
    case midi::kControlChange:
        fluid_synth_cc(synth_, channel, a, b);
        break;
    case midi::kProgramChange:
        fluid_synth_program_change(synth_, channel, a);
        break;
    case midi::kPitchBend:
        fluid_synth_pitch_bend(synth_, channel, a | (b << 7));
        break;
    default:
        break;
    }
}

void FluidSynthSink::Render(float* left, float* right, size_t frames) noexcept {
    fluid_synth_write_float(synth_, static_cast<int>(frames), left, 0, 1, right, 0, 1);
}

} // namespace vocato::media
