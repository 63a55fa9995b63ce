// Helpers of the precise tracker's suites: configuration in the converter's order, generated
// stress signals (noise, vowel-like pulse trains, note sequences) and a runner that turns the
// tracker's decisions into notes with their fine pitch.
#pragma once

#include "../EngineTestSupport.h"
#include "PitchTracker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace precisetest {

using enginetest::Cents;
using enginetest::NoteFrequency;
using enginetest::Render;
using enginetest::Tone;

struct Setup {
    double rate = 44100;
    double minNote = 36;
    double maxNote = 72;
    double bendRange = 4;
    double levelMode = WFET_LEVEL_EXPRESSION;
    double startDb = -24;
    double holdDb = -36;
};

// The converter's order: rate, span, range, bend, levels, shape settings, ceiling, mode.
inline std::unique_ptr<vocato::PitchTracker> MakeTracker(const Setup& s = {}) {
    auto tracker = vocato::MakePreciseTracker();
    const std::pair<int16_t, double> steps[] = {
        {WFET_SAMPLE_RATE, s.rate},      {WFET_FILTER_SPAN, 1.0},       {WFET_MAX_NOTE, s.maxNote},
        {WFET_MIN_NOTE, s.minNote},      {WFET_BEND_RANGE, s.bendRange}, {WFET_START_LEVEL_DB, s.startDb},
        {WFET_HOLD_LEVEL_DB, s.holdDb},  {WFET_START_DISTANCE, 0.1},    {WFET_HOLD_DISTANCE, 0.3},
        {WFET_LAG_WEIGHT, 0.1},          {WFET_START_PERIODS, 2},       {WFET_HOLD_PERIODS, 2},
        {WFET_CONTINUITY, 0.1},          {WFET_MEDIAN, 0},              {WFET_CONFIRM, 0},
        {WFET_LEVEL_CEIL_DB, -6},        {WFET_LEVEL_MODE, s.levelMode}};
    for (auto [code, value] : steps) {
        tracker->Set(code, value);
    }
    return tracker;
}

inline std::vector<int16_t> Silence(double seconds, double rate = 44100) {
    return std::vector<int16_t>(static_cast<size_t>(seconds * rate), 0);
}

inline std::vector<int16_t> Concat(std::initializer_list<std::vector<int16_t>> parts) {
    std::vector<int16_t> all;
    for (const auto& p : parts) {
        all.insert(all.end(), p.begin(), p.end());
    }
    return all;
}

inline int16_t Saturate(double v) { return static_cast<int16_t>(std::clamp(std::lround(v), -32768L, 32767L)); }

// Adds white noise at `levelDb` dBFS (RMS); a fixed seed keeps the suites reproducible.
inline std::vector<int16_t> AddNoise(std::vector<int16_t> signal, double levelDb, unsigned seed = 7) {
    std::mt19937 generator(seed);
    std::normal_distribution<double> gauss(0.0, 32767.0 * std::pow(10.0, levelDb / 20));
    for (int16_t& s : signal) {
        s = Saturate(s + gauss(generator));
    }
    return signal;
}

inline double RmsDb(const std::vector<int16_t>& signal) {
    double sum = 0;
    for (int16_t s : signal) {
        sum += double(s) * s;
    }
    return 10 * std::log10(sum / signal.size() / (32767.0 * 32767.0));
}

// A vowel-like sound: a glottal-style pulse train through two formant resonators (two-pole
// resonances), normalised to a peak of `levelDb` dBFS.
inline std::vector<int16_t> Vowel(double frequency, double seconds, double f1, double f2, double levelDb = -6,
                                  double rate = 44100) {
    const auto n = static_cast<size_t>(seconds * rate);
    std::vector<double> y(n, 0.0);
    auto resonate = [&](double centre, double bandwidth) {
        const double r = std::exp(-std::numbers::pi * bandwidth / rate);
        const double a1 = 2 * r * std::cos(2 * std::numbers::pi * centre / rate);
        const double a2 = -r * r;
        double y1 = 0, y2 = 0;
        for (double& v : y) {
            const double out = v + a1 * y1 + a2 * y2;
            y2 = y1;
            y1 = out;
            v = out;
        }
    };
    double phase = 0;
    for (size_t i = 0; i < n; ++i) {
        phase += frequency / rate;
        if (phase >= 1.0) {
            phase -= 1.0;
            y[i] = 1.0;
        }
    }
    resonate(f1, 80);
    resonate(f2, 120);
    double peak = 1e-9;
    for (double v : y) {
        peak = std::max(peak, std::fabs(v));
    }
    std::vector<int16_t> out(n);
    const double gain = 32767 * std::pow(10.0, levelDb / 20) / peak;
    for (size_t i = 0; i < n; ++i) {
        out[i] = Saturate(y[i] * gain);
    }
    return out;
}

// Multiplies by an attack (and release) ramp so a tone starts and ends like a played note.
inline std::vector<int16_t> Envelope(std::vector<int16_t> s, double attackSeconds, double releaseSeconds,
                                     double rate = 44100) {
    const double attack = attackSeconds * rate, release = releaseSeconds * rate;
    for (size_t i = 0; i < s.size(); ++i) {
        double g = 1.0;
        if (i < attack) g = i / attack;
        if (s.size() - i < release) g = std::min(g, (s.size() - i) / release);
        s[i] = Saturate(s[i] * g);
    }
    return s;
}

struct Note {
    int note;
    size_t onFrame;
    size_t offFrame; // frame count when still sounding at the end
    double meanPitch;   // fine pitch from note and bend, averaged over the middle half
    double pitchSpread; // largest distance of that fine pitch from its mean, in semitones
};

struct TrackRun {
    std::vector<WFETMidiOut> outputs;
    std::vector<Note> notes;
};

// Feeds 16-sample chunks, `blockSamples` at a time, and collects every frame's decision.
inline TrackRun Track(vocato::PitchTracker& tracker, const std::vector<int16_t>& samples, double bendRange = 4,
                 size_t blockSamples = 16) {
    TrackRun run;
    WFETMidiOut out{-1, -1, 0, 8192, 0};
    for (size_t block = 0; block < samples.size(); block += blockSamples) {
        const size_t blockEnd = std::min(samples.size(), block + blockSamples);
        for (size_t i = block; i < blockEnd; i += kWFETFrameSamples) {
            const size_t count = std::min<size_t>(kWFETFrameSamples, blockEnd - i);
            tracker.Process(samples.data() + i, static_cast<uint32_t>(count * 2));
            tracker.Calc(&out);
            run.outputs.push_back(out);
        }
    }
    int sounding = -1;
    std::vector<double> pitches;
    auto close = [&](size_t frame) {
        // The middle half: away from the attack and from the release into silence.
        const std::vector<double> tail(pitches.begin() + pitches.size() / 4,
                                       pitches.begin() + pitches.size() * 3 / 4);
        Note n{sounding, frame - pitches.size(), frame, 0.0, 0.0};
        for (double p : tail) n.meanPitch += p / tail.size();
        for (double p : tail) n.pitchSpread = std::max(n.pitchSpread, std::fabs(p - n.meanPitch));
        run.notes.push_back(n);
    };
    for (size_t f = 0; f < run.outputs.size(); ++f) {
        const WFETMidiOut& o = run.outputs[f];
        if (o.noteOff >= 0 && sounding >= 0) {
            close(f);
            sounding = -1;
        }
        if (o.noteOn >= 0) {
            if (sounding >= 0) close(f);
            sounding = o.noteOn;
            pitches.clear();
        }
        if (sounding >= 0) {
            pitches.push_back(sounding + (o.bend - 8192) * bendRange / 8191.0);
        }
    }
    if (sounding >= 0) close(run.outputs.size());
    return run;
}

inline std::vector<int> NoteNumbers(const TrackRun& run) {
    std::vector<int> notes;
    for (const Note& n : run.notes) notes.push_back(n.note);
    return notes;
}

} // namespace precisetest
