// Generated test audio: a sung-like melody of tones with three harmonics, soft edges and
// silence around each note, as 16-bit samples and as the floats a host would pass.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace vocato::lv2::test {

struct MelodyNote {
    int note;       // MIDI note number
    double seconds; // length of the tone; a gap of silence follows
};

inline std::vector<int16_t> RenderMelody(const std::vector<MelodyNote>& notes, double rate,
                                         double amplitude = 0.4, double gapSeconds = 0.15) {
    std::vector<int16_t> out(static_cast<size_t>(0.2 * rate), 0); // lead-in
    for (const MelodyNote& n : notes) {
        const double f = 440.0 * std::pow(2.0, (n.note - 69) / 12.0);
        const auto length = static_cast<size_t>(n.seconds * rate);
        const auto edge = static_cast<size_t>(0.01 * rate);
        for (size_t i = 0; i < length; ++i) {
            const double t = static_cast<double>(i) / rate;
            const double ramp = std::min(
                {1.0, static_cast<double>(i) / edge, static_cast<double>(length - i) / edge});
            const double w = 2.0 * std::numbers::pi * f * t;
            const double v = (std::sin(w) + 0.5 * std::sin(2 * w) + 0.25 * std::sin(3 * w)) / 1.75;
            out.push_back(static_cast<int16_t>(std::lround(32767.0 * amplitude * ramp * v)));
        }
        out.insert(out.end(), static_cast<size_t>(gapSeconds * rate), 0);
    }
    out.insert(out.end(), static_cast<size_t>(0.3 * rate), 0); // every note ends before the end
    return out;
}

// Exactly what a 16-bit sound file holds, as a host's floats.
inline std::vector<float> ToFloat(const std::vector<int16_t>& samples) {
    std::vector<float> out(samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
        out[i] = static_cast<float>(samples[i]) / 32768.0f;
    }
    return out;
}

inline const std::vector<MelodyNote>& TestMelody() {
    static const std::vector<MelodyNote> melody = {{57, 0.35}, {60, 0.3}, {64, 0.4},
                                                   {62, 0.25}, {59, 0.3}, {55, 0.5}};
    return melody;
}

} // namespace vocato::lv2::test
