// The seven send operations. Each acts in this order: synthesizer and MIDI outputs,
// recording, window, node fields.
#include "VocatoNode.h"

#include "Diagnostics.h"
#include "Truncate.h"

namespace vocato {

namespace midi = media::midi;

void VocatoNode::Play(const media::MidiMessage& message, uint32_t stamp) noexcept {
    if (fSynth != nullptr) {
        fSynth->Send(message, stamp);
    }
    for (media::MidiSink* sink : fOutputs) {
        if (sink != nullptr) {
            sink->Send(message, stamp);
        }
    }
}

void VocatoNode::Record(const media::MidiMessage& message, double time) noexcept {
    if (fWindow != nullptr) {
        fWindow->recording.Record(StampMs(time - fStoreBaseTime.load(std::memory_order_relaxed)),
                                  message);
    }
}

uint32_t VocatoNode::RecordingStampNow() const noexcept {
    return StampMs(MidiClock() - fStoreBaseTime.load(std::memory_order_relaxed));
}

void VocatoNode::SendNoteOn(char channel, unsigned char note, unsigned char velocity,
                            double time) noexcept {
    const auto message = midi::NoteOn(channel, note, velocity);
    Play(message, StampMs(NowMs()));
    Record(message, time);
    if (fWindow != nullptr) {
        fWindow->displayNote.store(note, std::memory_order_relaxed);
        fWindow->displayVelocity.store(velocity, std::memory_order_relaxed);
    }
}

void VocatoNode::SendNoteOff(char channel, unsigned char note, unsigned char velocity,
                             double time) noexcept {
    const auto message = midi::NoteOff(channel, note, velocity);
    Play(message, StampMs(NowMs()));
    Record(message, time);
    if (fWindow != nullptr) {
        fWindow->displayNote.store(0.0f, std::memory_order_relaxed);
        fWindow->displayVelocity.store(velocity, std::memory_order_relaxed);
    }
}

void VocatoNode::SendExpression(char channel, unsigned char value, double time) noexcept {
    const auto message = midi::ControlChange(channel, midi::kExpression, value);
    Play(message, StampMs(time));
    Record(message, time);
    if (fWindow != nullptr) {
        fWindow->displayExpression.store(value, std::memory_order_relaxed);
    }
    fLastExpression = value;
}

void VocatoNode::SendBend(char channel, unsigned short value, double time) noexcept {
    const auto message = midi::PitchBend(channel, value & 0x7F, (value >> 7) & 0x7F);
    Play(message, StampMs(time));
    Record(message, time);
    if (fWindow != nullptr) {
        fWindow->displayBend.store(value, std::memory_order_relaxed);
    }
    fLastBend = value;
}

void VocatoNode::SendProgramChange(char channel, short program, double time) noexcept {
    media::PostDiagnostic("system -stamp %f\n", static_cast<double>(NowMicros()) - time * 1000.0);
    SilenceAll(false);
    Play(midi::ProgramChange(channel, static_cast<uint8_t>(program & 0xFF)), StampMs(time));
}

void VocatoNode::SendAllNotesOff(bool justChannel) noexcept {
    SilenceAll(justChannel);
}

void VocatoNode::SilenceAll(bool justChannel) noexcept {
    const uint32_t now = StampMs(NowMs());
    if (fSynth != nullptr) {
        fSynth->AllNotesOff(justChannel, now);
    }
    for (media::MidiSink* sink : fOutputs) {
        if (sink != nullptr) {
            sink->AllNotesOff(justChannel, now);
        }
    }
}

void VocatoNode::SendBendRange(char channel, unsigned char semitones, double time) noexcept {
    // Registered parameter 0/0 is the pitch-bend sensitivity; data entry sets it.
    const uint32_t stamp = StampMs(time);
    Play(midi::ControlChange(channel, 101, 0), stamp);
    Play(midi::ControlChange(channel, 100, 0), stamp);
    Play(midi::ControlChange(channel, 6, semitones & 0x7F), stamp);
    Play(midi::ControlChange(channel, 38, 0), stamp);
    if (fWindow != nullptr) {
        fWindow->SetBendRange(static_cast<float>(semitones));
    }
}

void VocatoNode::SetMidiStoreBaseTime(int64_t) noexcept {
    fStoreBaseTime.store(fMidiClock.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

void VocatoNode::CheckSynthFile() {
    if (!fOptions.internalSynth) {
        return;
    }
    const auto file = media::FindSoundFont(fOptions.soundFonts);
    if (!file) {
        return;
    }
    fSynth = media::FluidSynthSink::Create(fOptions.synthRate);
    if (fSynth == nullptr) {
        return;
    }
    if (fSynth->LoadSoundFont(*file)) {
        media::Diagnostic("midiSynth enable");
        return;
    }
    media::Alert& alert = fOptions.alert != nullptr ? *fOptions.alert : fStderrAlert;
    alert.Show("Synthfile Error", "No synthfile for synthesizer");
}

} // namespace vocato
