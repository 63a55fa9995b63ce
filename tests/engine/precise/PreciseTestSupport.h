// Helpers of the precise tracker's suites: configuration in the converter's order, generated
// stress signals and a runner that turns the decisions into notes with their fine pitch.
#pragma once

#include "../EngineTestSupport.h"
#include "PitchTracker.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <numeric>
#include <random>
#include <utility>

namespace precisetest {

using enginetest::NoteFrequency;
using enginetest::Render;
using enginetest::Tone;
using enginetest::Voice;

inline std::unique_ptr<vocato::PitchTracker> MakeTracker(const Voice& s = {}) {
    auto tracker = vocato::MakePreciseTracker();
    enginetest::ConfigureVoice(s, [&](int16_t code, double value) { tracker->Set(code, value); });
    return tracker;
}

inline std::vector<int16_t> Silence(double seconds) {
    return std::vector<int16_t>(static_cast<size_t>(seconds * 44100), 0);
}

inline std::vector<int16_t> Concat(std::initializer_list<std::vector<int16_t>> parts) {
    std::vector<int16_t> all;
    for (const auto& p : parts) {
        all.insert(all.end(), p.begin(), p.end());
    }
    return all;
}

inline int16_t Saturate(double v) {
    return static_cast<int16_t>(std::clamp(std::lround(v), -32768L, 32767L));
}

// White noise at `levelDb` dBFS RMS; a fixed seed keeps the suites reproducible.
inline std::vector<int16_t> AddNoise(std::vector<int16_t> signal, double levelDb,
                                     unsigned seed = 7) {
    std::mt19937 generator(seed);
    std::normal_distribution<double> gauss(0.0, 32767.0 * std::pow(10.0, levelDb / 20));
    for (int16_t& s : signal) {
        s = Saturate(s + gauss(generator));
    }
    return signal;
}

// Mains hum under `signal`: the first `partials` harmonics of `mains` Hz, each at `levelDb`
// dBFS peak, in phases a fixed seed draws.
inline std::vector<int16_t> AddHum(std::vector<int16_t> signal, double mains, int partials,
                                   double levelDb, double rate = 44100) {
    std::mt19937 generator(3);
    std::uniform_real_distribution<double> turn(0.0, 2 * std::numbers::pi);
    std::vector<double> phases(static_cast<size_t>(partials));
    for (double& phase : phases) {
        phase = turn(generator);
    }
    const double amplitude = 32767.0 * std::pow(10.0, levelDb / 20);
    for (size_t i = 0; i < signal.size(); ++i) {
        double hum = 0.0;
        for (int k = 1; k <= partials; ++k) {
            hum += std::sin(2 * std::numbers::pi * k * mains * i / rate + phases[k - 1]);
        }
        signal[i] = Saturate(signal[i] + amplitude * hum);
    }
    return signal;
}

// A glottal-style pulse train through two formant resonators, peak at -6 dBFS, its
// fundamental following `frequencyAt` (seconds to Hz) from one cycle to the next. A rough
// voice has `jitter`: each cycle's period is off by that fraction (standard deviation), drawn
// anew per cycle.
inline std::vector<int16_t> Vowel(const std::function<double(double)>& frequencyAt,
                                  double seconds, double f1, double f2, double jitter = 0) {
    const double rate = 44100;
    std::vector<double> y(static_cast<size_t>(seconds * rate), 0.0);
    std::mt19937 random(7);
    std::normal_distribution<double> offset;
    double cycle = frequencyAt(0);
    double phase = 0;
    for (size_t i = 0; i < y.size(); ++i) {
        phase += cycle / rate;
        y[i] = phase >= 1.0 ? 1.0 : 0.0;
        phase -= y[i];
        if (y[i] > 0) {
            cycle = frequencyAt(i / rate) / (1.0 + jitter * offset(random));
        }
    }
    for (auto [centre, bandwidth] : {std::pair{f1, 80.0}, std::pair{f2, 120.0}}) {
        const double r = std::exp(-std::numbers::pi * bandwidth / rate);
        const double a1 = 2 * r * std::cos(2 * std::numbers::pi * centre / rate);
        double y1 = 0, y2 = 0;
        for (double& v : y) {
            v += a1 * y1 - r * r * y2;
            y2 = std::exchange(y1, v);
        }
    }
    const double peak =
        std::fabs(*std::ranges::max_element(y, {}, [](double v) { return std::fabs(v); }));
    std::vector<int16_t> out;
    for (double v : y) {
        out.push_back(Saturate(v * 32767 * std::pow(10.0, -6 / 20.0) / peak));
    }
    return out;
}

// The same vowel held on one fundamental.
inline std::vector<int16_t> Vowel(double frequency, double seconds, double f1, double f2,
                                  double jitter = 0) {
    return Vowel([frequency](double) { return frequency; }, seconds, f1, f2, jitter);
}

// A tone of three harmonics at `levelDb` dBFS peak, with a vibrato of `cents` at 5.5 Hz.
inline std::vector<int16_t> Harmonic(double note, double seconds, double levelDb = -6,
                                     double cents = 0, double rate = 44100) {
    Tone tone{.frequency = NoteFrequency(note), .seconds = seconds, .levelDb = levelDb};
    tone.harmonics = {1, 0.5, 0.3};
    tone.vibratoCents = cents;
    return Render(tone, rate);
}

// With 100 ms of silence before and after, so that it starts and ends.
inline std::vector<int16_t> Padded(const std::vector<int16_t>& s) {
    return Concat({Silence(0.1), s, Silence(0.1)});
}

// A tone with 10 ms ramps at both ends, as a played note starts and ends.
inline std::vector<int16_t> PlayedNote(int note, double seconds) {
    std::vector<int16_t> s = Harmonic(note, seconds);
    const double ramp = 0.01 * 44100;
    for (size_t i = 0; i < s.size(); ++i) {
        s[i] = Saturate(s[i] * std::min({1.0, i / ramp, (s.size() - i) / ramp}));
    }
    return s;
}

struct Note {
    int note;
    size_t onFrame;
    size_t offFrame;    // the frame count when still sounding at the end
    double meanPitch;   // fine pitch from note and bend, averaged over the middle half
    double pitchSpread; // largest distance of that fine pitch from its mean, in semitones
    // Times only for runs at 44.1 kHz; the runs at other rates check which notes, not when.
    double OnSeconds() const { return onFrame * 16 / 44100.0; }
    double OffSeconds() const { return offFrame * 16 / 44100.0; }
};

using Notes = std::vector<int>;

struct TrackRun {
    std::vector<WFETMidiOut> outputs;
    std::vector<Note> notes;
    Notes NoteNumbers() const {
        Notes numbers;
        for (const Note& n : notes) {
            numbers.push_back(n.note);
        }
        return numbers;
    }
};

// Feeds 16-sample frames with a decision after each; a frame that straddles the end of a host
// block of `blockSamples` reaches the tracker in pieces.
inline TrackRun Track(vocato::PitchTracker& tracker, const std::vector<int16_t>& samples,
                      double bendRange = 4, size_t blockSamples = 16) {
    TrackRun run;
    WFETMidiOut out{-1, -1, 0, 8192, 0};
    for (size_t frame = 0; frame < samples.size(); frame += kWFETFrameSamples) {
        const size_t end = std::min(samples.size(), frame + kWFETFrameSamples);
        for (size_t i = frame, next = 0; i < end; i = next) {
            next = std::min(end, (i / blockSamples + 1) * blockSamples);
            tracker.Process(samples.data() + i, static_cast<uint32_t>((next - i) * 2));
        }
        tracker.Calc(&out);
        run.outputs.push_back(out);
    }
    int sounding = -1;
    std::vector<double> pitches;
    auto close = [&](size_t frame) {
        // The middle half: away from the attack and from the release into silence.
        const auto begin = pitches.begin() + pitches.size() / 4;
        const auto end = pitches.begin() + pitches.size() * 3 / 4;
        Note n{sounding, frame - pitches.size(), frame, 0.0, 0.0};
        n.meanPitch = std::accumulate(begin, end, 0.0) / static_cast<double>(end - begin);
        for (auto p = begin; p != end; ++p) {
            n.pitchSpread = std::max(n.pitchSpread, std::fabs(*p - n.meanPitch));
        }
        run.notes.push_back(n);
    };
    for (size_t f = 0; f < run.outputs.size(); ++f) {
        const WFETMidiOut& o = run.outputs[f];
        if (sounding >= 0 && (o.noteOff >= 0 || o.noteOn >= 0)) {
            close(f);
            sounding = -1;
        }
        if (o.noteOn >= 0) {
            sounding = o.noteOn;
            pitches.clear();
        }
        if (sounding >= 0) {
            pitches.push_back(sounding + (o.bend - 8192) * bendRange / 8191.0);
        }
    }
    if (sounding >= 0) {
        close(run.outputs.size());
    }
    return run;
}

// A fresh tracker set up for a voice.
inline TrackRun Track(const std::vector<int16_t>& samples, const Voice& setup = {}) {
    return Track(*MakeTracker(setup), samples, setup.bendRange);
}

} // namespace precisetest
