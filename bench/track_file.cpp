// Runs one tracker over a sound file and writes the notes it decides as CSV
// (onset,offset,midi; seconds), for the accuracy benchmark. The first channel is used,
// converted to 16-bit; samples go in 16 at a time with a decision after each chunk, as the
// converter node feeds them. With --timing the processing CPU time (not wall-clock time, which
// other load on the machine would distort) and the real-time factor go to stderr.

#include "BenchPresets.h"
#include "PitchTracker.h"

#include <CLI/CLI.hpp>
#include <sndfile.h>

#include <ctime>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Audio {
    std::vector<int16_t> samples;
    double rate = 0.0;
};

bool ReadFirstChannel(const std::string& path, Audio& audio)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) {
        std::fprintf(stderr, "track_file: cannot read %s: %s\n", path.c_str(), sf_strerror(nullptr));
        return false;
    }
    std::vector<int16_t> interleaved(static_cast<size_t>(info.frames) * info.channels);
    const sf_count_t got = sf_readf_short(file, interleaved.data(), info.frames);
    sf_close(file);
    audio.rate = info.samplerate;
    audio.samples.resize(static_cast<size_t>(got));
    for (sf_count_t i = 0; i < got; ++i) {
        audio.samples[i] = interleaved[static_cast<size_t>(i) * info.channels];
    }
    return true;
}

struct Note {
    double onset;
    double offset;
    int midi;
};

std::vector<Note> Track(vocato::PitchTracker& tracker, const Audio& audio)
{
    std::vector<Note> notes;
    int sounding = -1;
    double onset = 0.0;
    WFETMidiOut out{-1, -1, 0, 8192, 127};
    const size_t total = audio.samples.size();
    for (size_t pos = 0; pos < total; pos += kWFETFrameSamples) {
        const size_t count = std::min<size_t>(kWFETFrameSamples, total - pos);
        tracker.Process(audio.samples.data() + pos, static_cast<uint32_t>(count * 2));
        tracker.Calc(&out);
        const double now = static_cast<double>(pos + count) / audio.rate;
        if (out.noteOff >= 0 && out.noteOff == sounding) {
            notes.push_back({onset, now, sounding});
            sounding = -1;
        }
        if (out.noteOn >= 0) {
            if (sounding >= 0) {
                notes.push_back({onset, now, sounding});
            }
            sounding = out.noteOn;
            onset = now;
        }
    }
    if (sounding >= 0) {
        notes.push_back({onset, static_cast<double>(total) / audio.rate, sounding});
    }
    return notes;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Track a sound file and write its notes as CSV"};
    std::string input;
    std::string output;
    std::string trackerName = "precise";
    int preset = 1;
    bool timing = false;
    app.add_option("input", input, "sound file")->required();
    app.add_option("output", output, "CSV file (onset,offset,midi)")->required();
    app.add_option("--tracker", trackerName, "classic or precise");
    app.add_option("--preset", preset, "input preset 1-20")->check(CLI::Range(1, 20));
    app.add_flag("--timing", timing, "print the processing time to stderr");
    CLI11_PARSE(app, argc, argv);

    vocato::TrackerKind kind{};
    if (!vocato::ParseTrackerKind(trackerName, kind)) {
        std::fprintf(stderr, "track_file: unknown tracker '%s' (classic or precise)\n", trackerName.c_str());
        return 2;
    }
    Audio audio;
    if (!ReadFirstChannel(input, audio)) {
        return 1;
    }
    std::unique_ptr<vocato::PitchTracker> tracker =
        kind == vocato::TrackerKind::Classic ? vocato::MakeClassicTracker() : vocato::MakePreciseTracker();
    if (!tracker) {
        std::fprintf(stderr, "track_file: the %s tracker cannot be created\n", trackerName.c_str());
        return 1;
    }
    vocato::bench::ApplyPreset(*tracker, preset, audio.rate);

    const std::clock_t start = std::clock();
    const std::vector<Note> notes = Track(*tracker, audio);
    const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
    if (timing) {
        const double duration = static_cast<double>(audio.samples.size()) / audio.rate;
        std::fprintf(stderr, "%s: %.3f s of audio in %.4f s of CPU (%.0fx real time)\n", input.c_str(), duration,
                     seconds, duration / seconds);
    }

    FILE* csv = std::fopen(output.c_str(), "w");
    if (csv == nullptr) {
        std::fprintf(stderr, "track_file: cannot write %s\n", output.c_str());
        return 1;
    }
    std::fprintf(csv, "onset,offset,midi\n");
    for (const Note& n : notes) {
        std::fprintf(csv, "%.4f,%.4f,%d\n", n.onset, n.offset, n.midi);
    }
    return std::fclose(csv) == 0 ? 0 : 1;
}
