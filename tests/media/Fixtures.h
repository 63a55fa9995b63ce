// Generated audio, rendered melodies and an independent MIDI-file reader for the tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vocato::test {

// A fresh directory under the system's temporary directory, removed with its contents.
class TempDir {
public:
    TempDir();
    ~TempDir();
    const std::string& Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::vector<float> Sine(double hz, double rate, double seconds, double amplitude = 0.5);

// Writes interleaved samples in [-1, 1] with libsndfile; `format` is an SF_FORMAT_* mask.
void WriteSoundFile(const std::string& path, const std::vector<float>& interleaved, int rate,
                    int channels, int format);

struct Note {
    int key;
    double onset;  // seconds
    double offset; // seconds
};

// Renders the notes with FluidSynth and the General MIDI SoundFont, mono, dry, with its peak
// at -3 dBFS.
std::vector<float> RenderMelody(const std::vector<Note>& notes, int program, double rate,
                                double tailSeconds = 0.5);

// The fundamental of a steady harmonic sound, by autocorrelation; 0 when there is none.
double EstimatePitchHz(const float* samples, size_t count, double rate);

// Cents from `reference` to `hz`.
double Cents(double hz, double reference);

// Reads a MIDI file with python3-mido: "format division" on the first line, then one line per
// track message, "absolute_ticks hex_bytes" (meta messages as "meta type").
std::vector<std::string> ReadMidiWithMido(const std::string& path);

} // namespace vocato::test
