// The audio path: down-mix, display copy, 16-sample frames through the tracker, and the
// decisions turned into sends.
#include "VocatoNode.h"

#include "Truncate.h"

#include <algorithm>
#include <cstdlib>

namespace vocato {

void VocatoNode::StereoToMono(int16_t* samples, uint32_t frames) noexcept {
    FirstChannelToMono(samples, frames, 2);
}

void VocatoNode::FirstChannelToMono(int16_t* samples, uint32_t frames, uint32_t channels) noexcept {
    // In increasing order, so each read is at or after the write: safe in place.
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = samples[static_cast<size_t>(i) * channels];
    }
}

void VocatoNode::BufferReceived(media::Buffer& buffer) noexcept {
    switch (buffer.type) {
    case media::BufferType::Parameters:
        ApplyParameterData(buffer.data, buffer.sizeUsed);
        break;
    case media::BufferType::RawAudio:
        RunEvents();
        ProcessAudio(buffer);
        break;
    case media::BufferType::Other:
        break; // nothing here uses it; the producer keeps its buffer
    }
}

void VocatoNode::ProcessAudio(media::Buffer& buffer) noexcept {
    double clock = fMidiClock.load(std::memory_order_relaxed);
    if (clock == 0.0) {
        // Six seconds behind the clock: stamps handed to the synthesizer are never in the
        // future, so it plays them at once.
        clock = static_cast<double>(NowMicros() / 1000 - 6000);
    }
    auto* samples = static_cast<int16_t*>(buffer.data);
    const uint32_t channels = fInput.format.raw.channelCount;
    size_t byteCount = buffer.sizeUsed;
    if (channels == 2) {
        StereoToMono(samples, static_cast<uint32_t>(buffer.sizeUsed / 4));
        byteCount = buffer.sizeUsed / 2;
    } else if (channels > 2) {
        const auto frames = static_cast<uint32_t>(buffer.sizeUsed / (2 * channels));
        FirstChannelToMono(samples, frames, channels);
        byteCount = static_cast<size_t>(frames) * 2;
    }
    if (fAudioArea != nullptr) {
        fAudioArea->Write(samples,
                          std::min<size_t>(byteCount / 2, media::OscilloscopeArea::kSamples));
    }

    const float transpose = fTranspose.load(std::memory_order_relaxed);
    auto transposed = [transpose](int16_t note) {
        return static_cast<unsigned char>(TruncToward0<int32_t>(transpose + note));
    };
    const auto* data = static_cast<const uint8_t*>(buffer.data);
    const auto* first = data;
    size_t chunk = std::min<size_t>(byteCount, 2 * kWFETFrameSamples);
    while (chunk != 0) {
        fDecisionFrame = static_cast<uint32_t>((data - first + chunk + 1) / 2 - 1);
        if (fEngine != nullptr) {
            fEngine->Process(reinterpret_cast<const int16_t*>(data), static_cast<uint32_t>(chunk));
            fEngine->Calc(&fMidiOut);
            if (std::abs(fMidiOut.expression - fLastExpression) > 4) {
                SendExpression(fChannel, static_cast<unsigned char>(fMidiOut.expression), clock);
            }
            if (std::abs(fMidiOut.bend - fLastBend) > 64) {
                SendBend(fChannel, static_cast<unsigned short>(fMidiOut.bend), clock);
            }
            if (fMidiOut.noteOff >= 0) {
                SendNoteOff(fChannel, transposed(fMidiOut.noteOff), 0, clock);
            }
            if (fMidiOut.noteOn >= 0) {
                SendNoteOn(fChannel, transposed(fMidiOut.noteOn),
                           static_cast<unsigned char>(fMidiOut.velocity), clock);
            }
        }
        byteCount -= chunk;
        clock += fClockStep;
        fMidiClock.store(clock, std::memory_order_relaxed);
        data += chunk;
        chunk = std::min(byteCount, chunk);
    }
    fDecisionFrame = 0;
    fMidiClock.store(clock, std::memory_order_relaxed);
}

} // namespace vocato
