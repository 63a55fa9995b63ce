// What the node shows the window: the values the live displays poll, the calls that report
// a changed transposition, bend range or note range, the oscilloscope snapshot and the MIDI
// recording. The node writes from the audio thread; the window's timers read from the GUI
// thread. Everything is an atomic, so neither side ever waits for the other.
#pragma once

#include "RecordingSlot.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace vocato::media {

// The latest 128 mono samples of the input, under a sequence lock.
class OscilloscopeArea {
public:
    static constexpr size_t kSamples = 128;

    // Audio thread. Copies up to 128 samples; a shorter buffer leaves the rest as it was.
    void Write(const int16_t* samples, size_t count) noexcept;
    // Any thread. False while the area is detached (no connection).
    bool Read(int16_t (&out)[kSamples]) const noexcept;

    // Node thread: attached while a connection exists.
    void SetAttached(bool on) noexcept { attached_.store(on, std::memory_order_release); }
    bool Attached() const noexcept { return attached_.load(std::memory_order_acquire); }

private:
    std::atomic<int16_t> samples_[kSamples] = {};
    std::atomic<uint32_t> sequence_{0};
    std::atomic<bool> attached_{false};
};

class DisplaySink {
public:
    // Written by the node's send operations (audio thread), polled by the window.
    std::atomic<float> displayNote{0.0f};
    std::atomic<float> displayVelocity{0.0f};
    std::atomic<float> displayBend{0.0f};
    std::atomic<float> displayExpression{0.0f};

    // Node thread: the window's reports of changes made on the node's side.
    void SetTranspose(float v) noexcept { Report(transpose, v); }
    void SetBendRange(float v) noexcept { Report(bendRange, v); }
    void SetMidiMin(float v) noexcept { Report(midiMin, v); }
    void SetMidiMax(float v) noexcept { Report(midiMax, v); }

    std::atomic<float> transpose{0.0f};
    std::atomic<float> bendRange{0.0f};
    std::atomic<float> midiMin{0.0f};
    std::atomic<float> midiMax{0.0f};
    // Bumped on every report, so that a timer repaints only after a change.
    std::atomic<uint32_t> reports{0};

    OscilloscopeArea oscilloBuffer;
    RecordingSlot recording;

private:
    void Report(std::atomic<float>& field, float v) noexcept {
        field.store(v, std::memory_order_relaxed);
        reports.fetch_add(1, std::memory_order_release);
    }
};

} // namespace vocato::media
