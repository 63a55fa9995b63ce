#include "ConvertCommand.h"

#include "Diagnostics.h"

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace vocato::app {
namespace {

// A terminal gets a percentage that rewrites itself, at most five times a second.
class ProgressLine {
public:
    ProgressLine(const std::string& input, bool enabled) : input_(input), enabled_(enabled) {}
    ~ProgressLine() {
        if (shown_) {
            std::fprintf(stderr, "\r\033[K");
        }
    }
    void Update(double done) {
        const auto now = Clock::now();
        if (!enabled_ || now - last_ < std::chrono::milliseconds(200)) {
            return;
        }
        last_ = now;
        shown_ = true;
        std::fprintf(stderr, "\rconverting %s: %3.0f%%", input_.c_str(), 100.0 * done);
        std::fflush(stderr);
    }

private:
    using Clock = std::chrono::steady_clock;
    std::string input_;
    bool enabled_;
    bool shown_ = false;
    Clock::time_point last_ = Clock::now();
};

} // namespace

CLI::App* AddConvertCommand(CLI::App& app, ConvertOptions& o) {
    CLI::App* cmd = app.add_subcommand(
        "convert", "Convert a sound file to a Standard MIDI File through the converter node");
    cmd->add_option("IN", o.input, "Sound file to convert (WAV, FLAC, Ogg, AIFF, ...)")->required();
    cmd->add_option("-o,--output", o.output, "MIDI file to write")->required();
    AddNodeRequestOptions(*cmd, o.settings);
    cmd->add_option("--channel", o.settings.channel, "MIDI channel, 1 to 16")
        ->check(CLI::Range(1, 16));
    cmd->add_flag("--median", o.settings.median, "Decide on the median of the last three pitches");
    cmd->add_flag("--confirm", o.settings.confirm, "Start a note only on its second voiced frame");
    cmd->add_flag("-q,--quiet", o.quiet, "Print nothing but errors");
    return cmd;
}

int RunConvert(const ConvertOptions& o) {
    media::SetDiagnosticsQuiet(o.quiet);
    const auto started = std::chrono::steady_clock::now();
    ConversionReport report;
    {
        ProgressLine progress(o.input, !o.quiet && ::isatty(STDERR_FILENO) == 1);
        report = ConvertFile(o.input, o.output, o.settings,
                             [&progress](double done) { progress.Update(done); });
    }
    if (!report.ok) {
        std::fprintf(stderr, "vocato convert: %s\n", report.error.c_str());
        return 1;
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (!o.quiet) {
        std::printf("%s: %zu note%s in %.1f s of audio (%g Hz, %u ch), converted in %.2f s "
                    "(%.0fx real time) -> %s\n",
                    o.input.c_str(), report.notes, report.notes == 1 ? "" : "s",
                    report.audioSeconds, report.sampleRate, report.channels, seconds,
                    report.audioSeconds / seconds, o.output.c_str());
    }
    return 0;
}

} // namespace vocato::app
