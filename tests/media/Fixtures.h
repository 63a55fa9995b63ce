// Generated audio, rendered melodies, an independent MIDI-file reader and a kept alert for the
// tests.
#pragma once

#include "Alert.h"

#include <sndfile.h>

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

// Writes interleaved samples in [-1, 1] with libsndfile; `format` is an SF_FORMAT_* mask, by
// default 16-bit WAV.
void WriteSoundFile(const std::string& path, const std::vector<float>& interleaved,
                    int rate = 44100, int channels = 1, int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16);

// A 440 Hz sine at 44100 Hz as a 16-bit WAV file in `dir`; its path.
std::string WriteTone(const TempDir& dir, const std::string& name, double seconds);

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

// The keys of ReadMidiWithMido's channel messages whose status nibble is `status` (a hex digit,
// '9' for note-ons), in file order; note-ons of velocity 0 are left out.
std::vector<int> KeysOf(const std::vector<std::string>& midoLines, char status);

// The whole file; "" when it cannot be read.
std::string ReadFile(const std::string& path);

struct CommandOutcome {
    int status; // the exit status, -1 when the command did not exit
    std::string out;
};
// Runs `command` in the shell and keeps what it prints on standard output.
CommandOutcome RunCommand(const std::string& command);

class KeptAlerts final : public media::Alert {
public:
    void Show(std::string_view title, std::string_view text) override {
        shown.emplace_back(std::string(title) + ": " + std::string(text));
    }
    std::vector<std::string> shown;
};

} // namespace vocato::test
