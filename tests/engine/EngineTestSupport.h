// Shared helpers of the engine suites: ownership of a record, the configuration a voice
// preset gives the engine, generated signals and a runner that collects the MIDI decisions.
#pragma once

#include "WFET.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

namespace enginetest {

struct EngineDeleter {
    void operator()(WFETState* s) const { WFETEndProcess(s); }
};
using EnginePtr = std::unique_ptr<WFETState, EngineDeleter>;

inline EnginePtr NewEngine() {
    return EnginePtr(WFETBegProcess());
}

// A voice preset's range, bend and level mode; the rest is the same for every voice.
struct Voice {
    double rate = 44100;
    double minNote = 36;
    double maxNote = 72;
    double bendRange = 4;
    double levelMode = WFET_LEVEL_EXPRESSION;
};

// Hands `set` the codes and values in the order the converter feeds them, as the floats its
// presets hold.
template <class Set> void ConfigureVoice(const Voice& v, Set set) {
    set(WFET_SAMPLE_RATE, v.rate);
    set(WFET_FILTER_SPAN, 1.0f);
    set(WFET_MAX_NOTE, v.maxNote);
    set(WFET_MIN_NOTE, v.minNote);
    set(WFET_BEND_RANGE, v.bendRange);
    const std::pair<int16_t, double> steps[] = {
        {WFET_START_LEVEL_DB, -24}, {WFET_HOLD_LEVEL_DB, -36}, {WFET_START_DISTANCE, 0.1f},
        {WFET_HOLD_DISTANCE, 0.3f}, {WFET_LAG_WEIGHT, 0.1f},   {WFET_START_PERIODS, 2},
        {WFET_HOLD_PERIODS, 2},     {WFET_CONTINUITY, 0.1f},   {WFET_MEDIAN, 0},
        {WFET_CONFIRM, 0},          {WFET_LEVEL_CEIL_DB, -6}};
    for (auto [code, value] : steps) {
        set(code, value);
    }
    set(WFET_LEVEL_MODE, v.levelMode);
}

inline EnginePtr VoiceEngine() {
    EnginePtr s = NewEngine();
    ConfigureVoice({}, [&](int16_t code, double value) { WFETSet(s.get(), code, value); });
    return s;
}

inline double NoteFrequency(double note) {
    return 440.0 * std::pow(2.0, (note - 69) / 12);
}

// A sum of harmonics with the given amplitudes (index 0 is the fundamental), at a peak level
// in dBFS, optionally with a sinusoidal vibrato of `vibratoCents` at `vibratoHz`, or a glide
// to `glideTo` Hz over the whole signal.
struct Tone {
    double frequency = 440;
    double seconds = 1;
    double levelDb = -6;
    std::vector<double> harmonics{1.0};
    double vibratoCents = 0;
    double vibratoHz = 5.5;
    double glideTo = 0;
};

inline std::vector<int16_t> Render(const Tone& t, double rate = 44100) {
    const auto n = static_cast<size_t>(t.seconds * rate);
    double norm = 0;
    for (double a : t.harmonics) {
        norm += std::fabs(a);
    }
    const double amplitude = 32767 * std::pow(10.0, t.levelDb / 20) / norm;
    std::vector<int16_t> out(n);
    double phase = 0;
    for (size_t i = 0; i < n; ++i) {
        const double progress = static_cast<double>(i) / static_cast<double>(n);
        const double glide = t.glideTo > 0 ? std::pow(t.glideTo / t.frequency, progress) : 1.0;
        const double f = t.frequency * glide *
                         std::pow(2.0, t.vibratoCents / 1200 *
                                           std::sin(2 * std::numbers::pi * t.vibratoHz * i / rate));
        phase += 2 * std::numbers::pi * f / rate;
        double v = 0;
        for (size_t h = 0; h < t.harmonics.size(); ++h) {
            v += t.harmonics[h] * std::sin(phase * static_cast<double>(h + 1));
        }
        out[i] = static_cast<int16_t>(std::lround(v * amplitude));
    }
    return out;
}

struct Event {
    size_t frame;
    int16_t noteOff;
    int16_t noteOn;
    int16_t velocity;
    bool operator==(const Event&) const = default;
};

struct Trace {
    std::vector<Event> events;        // frames with a note-off or a note-on
    std::vector<WFETMidiOut> outputs; // every frame's record
    std::vector<double> frequencies;  // every frame's frequency (-1 when unvoiced)
    std::vector<int16_t> NoteOns() const {
        std::vector<int16_t> notes;
        for (const Event& e : events) {
            if (e.noteOn >= 0) {
                notes.push_back(e.noteOn);
            }
        }
        return notes;
    }
};

// Feeds the samples in chunks of 16, as the converter does, `blockSamples` at a time.
inline Trace RunEngine(WFETState* s, const std::vector<int16_t>& samples,
                       size_t blockSamples = 16) {
    Trace trace;
    WFETMidiOut out{-1, -1, 0, 8192, 0};
    size_t frame = 0;
    for (size_t block = 0; block < samples.size(); block += blockSamples) {
        const size_t blockEnd = std::min(samples.size(), block + blockSamples);
        for (size_t i = block; i < blockEnd; i += kWFETFrameSamples) {
            const size_t count = std::min<size_t>(kWFETFrameSamples, blockEnd - i);
            WFETProcess(s, samples.data() + i, static_cast<uint32_t>(count * 2));
            WFETCalc(s, &out);
            if (out.noteOff >= 0 || out.noteOn >= 0) {
                trace.events.push_back({frame, out.noteOff, out.noteOn, out.velocity});
            }
            trace.outputs.push_back(out);
            trace.frequencies.push_back(s->frequency);
            ++frame;
        }
    }
    return trace;
}

inline Trace RunVoice(const std::vector<int16_t>& samples, size_t blockSamples = 16) {
    return RunEngine(VoiceEngine().get(), samples, blockSamples);
}

} // namespace enginetest
