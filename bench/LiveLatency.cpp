// End-to-end latency through JACK, in frames: from a tone's onset in Vocato's input port to
// its note-on in the MIDI port, for several pitches and periods. The tones run in freewheel
// (as fast as the machine allows); a second, real-time run of the same tones gives the DSP
// load and the xruns.
//
//   build/bench/live_latency_bench [--repeats N] [--seconds S] [--realtime] [--no-synth]
//                                  [--real-time-only]
#include "JackServer.h"
#include "JackTestClients.h"
#include "LiveTestSupport.h"

#include "Diagnostics.h"
#include "PitchTracker.h"

#include <jack/jack.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace vocato;
using namespace vocato::test;

constexpr double kRate = 44100.0;
constexpr int kPitches[] = {40, 45, 52, 57, 64, 69};
constexpr double kSilence = 0.25;
constexpr double kTone = 0.40;

// A voiced tone: fundamental and two harmonics, 5 ms attack, at -6 dBFS.
void AddTone(std::vector<float>& out, int key) {
    const double hz = 440.0 * std::pow(2.0, (key - 69) / 12.0);
    const auto n = static_cast<size_t>(kTone * kRate);
    for (size_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i) / kRate;
        const double attack = std::min(1.0, t / 0.005);
        const double x = std::sin(2 * M_PI * hz * t) + 0.5 * std::sin(4 * M_PI * hz * t) +
                         0.25 * std::sin(6 * M_PI * hz * t);
        out.push_back(static_cast<float>(0.5 * attack * x / 1.75));
    }
}

struct Signal {
    std::vector<float> samples;
    std::vector<int64_t> onsets;
    std::vector<int> keys;
};

Signal MakeSignal(int repeats) {
    Signal s;
    for (int r = 0; r < repeats; ++r) {
        for (int key : kPitches) {
            s.samples.insert(s.samples.end(), static_cast<size_t>(kSilence * kRate), 0.0f);
            s.onsets.push_back(static_cast<int64_t>(s.samples.size()));
            s.keys.push_back(key);
            AddTone(s.samples, key);
        }
    }
    s.samples.insert(s.samples.end(), static_cast<size_t>(kSilence * kRate), 0.0f);
    return s;
}

struct Stats {
    double median = 0, p95 = 0, worst = 0, jitter = 0;
    size_t count = 0;
};

Stats Summarise(std::vector<double> v) {
    Stats s;
    s.count = v.size();
    if (v.empty()) {
        return s;
    }
    std::sort(v.begin(), v.end());
    s.median = v[v.size() / 2];
    s.p95 = v[std::min(v.size() - 1, v.size() * 95 / 100)];
    s.worst = v.back();
    const double mean = std::accumulate(v.begin(), v.end(), 0.0) / static_cast<double>(v.size());
    double var = 0;
    for (double x : v) {
        var += (x - mean) * (x - mean);
    }
    s.jitter = std::sqrt(var / static_cast<double>(v.size()));
    return s;
}

struct Run {
    std::vector<std::vector<double>> byPitch = std::vector<std::vector<double>>(std::size(kPitches));
    size_t missed = 0;
    size_t wrong = 0;
    double maxLoad = 0, meanLoad = 0;
    uint64_t xruns = 0;
    double seconds = 0;
};

std::atomic<uint64_t> xruns{0};

int CountXrun(void*) {
    xruns.fetch_add(1);
    return 0;
}

// `withVocato` false: the same player and recorder on the same server, for the xruns that
// the machine causes by itself.
bool synthOn = true;

Run Play(int period, const Signal& signal, bool freewheel, bool realtime, bool withVocato = true) {
    Run run;
    JackServer server(period, static_cast<int>(kRate), "", realtime && !freewheel);
    if (!server.Ready()) {
        std::fprintf(stderr, "jackd did not start\n");
        return run;
    }
    KeptAlerts alerts;
    app::LiveSession session(JackOnlySettings(synthOn), alerts);
    std::string report;
    if (withVocato) {
        session.Start(report);
    }
    PlayerClient player("player", signal.samples);
    RecorderClient recorder("recorder", 0);
    if (withVocato) {
        media::JackClient& jack = *session.Audio().Jack();
        player.ConnectTo(jack.InputPortName());
        recorder.Connect(jack.MidiPortName(), recorder.MidiPort());
    } else {
        player.ConnectTo(recorder.AudioPort());
    }
    jack_status_t status{};
    jack_client_t* control = jack_client_open("bench", JackNoStartServer, &status);
    jack_set_xrun_callback(control, &CountXrun, nullptr);
    jack_activate(control);
    std::this_thread::sleep_for(std::chrono::milliseconds(500)); // past the start-up
    xruns = 0;
    const auto started = std::chrono::steady_clock::now();
    player.Play();
    if (freewheel) {
        jack_set_freewheel(control, 1);
    }
    double loadSum = 0;
    int loadCount = 0;
    WaitFor([&] { return player.Done(); }, 600.0, [&] {
        session.Tick(stdout, stderr);
        if (!freewheel) {
            const double load = jack_cpu_load(control);
            run.maxLoad = std::max(run.maxLoad, load);
            loadSum += load;
            ++loadCount;
        }
    });
    if (freewheel) {
        jack_set_freewheel(control, 0);
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    run.meanLoad = loadCount > 0 ? loadSum / loadCount : 0;
    run.xruns = xruns.load();
    WaitFor([] { return false; }, 0.1, [&] { session.Tick(stdout, stderr); });
    jack_client_close(control);

    std::vector<RecordedEvent> ons;
    for (const RecordedEvent& e : recorder.Events()) {
        if ((e.bytes[0] & 0xF0) == 0x90 && e.bytes[2] != 0) {
            ons.push_back(e);
        }
    }
    const int64_t start = player.StartFrame();
    for (size_t i = 0; i < signal.onsets.size(); ++i) {
        const int64_t onset = start + signal.onsets[i];
        const int64_t end = i + 1 < signal.onsets.size() ? start + signal.onsets[i + 1]
                                                         : onset + static_cast<int64_t>(kRate);
        const auto hit = std::find_if(ons.begin(), ons.end(), [&](const RecordedEvent& e) {
            return e.frame >= onset && e.frame < end;
        });
        if (hit == ons.end()) {
            ++run.missed;
            continue;
        }
        if (hit->bytes[1] != signal.keys[i]) {
            ++run.wrong;
        }
        const size_t p = static_cast<size_t>(
            std::find(std::begin(kPitches), std::end(kPitches), signal.keys[i]) -
            std::begin(kPitches));
        run.byPitch[p].push_back(static_cast<double>(hit->frame - onset));
    }
    return run;
}

void PrintFreewheelTable(const Signal& signal, int repeats) {
    std::printf("Latency from tone onset in Vocato:input to note-on in Vocato:midi_out, frames at "
                "44100 Hz (%d tones per pitch, freewheel)\n\n", repeats);
    std::printf("| period | pitch | f0 period | median | p95 | worst | jitter (sd) | tones |\n");
    std::printf("|---|---|---|---|---|---|---|---|\n");
    for (int period : {64, 128, 256}) {
        const Run run = Play(period, signal, true, false);
        std::vector<double> all;
        for (size_t p = 0; p < std::size(kPitches); ++p) {
            const Stats s = Summarise(run.byPitch[p]);
            const double f0 = kRate / (440.0 * std::pow(2.0, (kPitches[p] - 69) / 12.0));
            std::printf("| %d | %d | %.0f | %.0f | %.0f | %.0f | %.1f | %zu |\n", period,
                        kPitches[p], f0, s.median, s.p95, s.worst, s.jitter, s.count);
            all.insert(all.end(), run.byPitch[p].begin(), run.byPitch[p].end());
        }
        const Stats s = Summarise(all);
        std::printf("| %d | all | | %.0f | %.0f | %.0f | %.1f | %zu (missed %zu, wrong key %zu) |\n",
                    period, s.median, s.p95, s.worst, s.jitter, s.count, run.missed, run.wrong);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv) {
    int repeats = 50;
    double seconds = 20;
    bool realtime = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--repeats") == 0 && i + 1 < argc) {
            repeats = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--seconds") == 0 && i + 1 < argc) {
            seconds = std::atof(argv[++i]);
        } else if (std::strcmp(argv[i], "--realtime") == 0) {
            realtime = true;
        } else if (std::strcmp(argv[i], "--no-synth") == 0) {
            synthOn = false;
        } else if (std::strcmp(argv[i], "--real-time-only") == 0) {
            repeats = 0;
        }
    }
    vocato::media::SetDiagnosticsQuiet(true);
    const Signal longRun = MakeSignal(repeats);
    const int realRepeats = std::max(1, static_cast<int>(seconds / ((kSilence + kTone) * std::size(kPitches))));
    const Signal shortRun = MakeSignal(realRepeats);

    {
        auto tracker = vocato::MakeClassicTracker();
        tracker->Set(WFET_SAMPLE_RATE, kRate);
        std::printf("Engine decision delay (DecisionDelaySamples at 44100 Hz, default settings): "
                    "%u frames\n\n", tracker->DecisionDelaySamples());
    }
    if (repeats > 0) {
        PrintFreewheelTable(longRun, repeats);
    }

    std::printf("\nReal-time runs (%.0f s of the same tones, synthesizer %s, %s jackd): DSP load "
                "and xruns\n\n", seconds, synthOn ? "on" : "off", realtime ? "real-time" : "non-real-time");
    std::printf("| period | mean DSP load | max DSP load | xruns | median latency |\n|---|---|---|---|---|\n");
    for (int period : {64, 128, 256}) {
        const Run run = Play(period, shortRun, false, realtime);
        std::vector<double> all;
        for (const auto& v : run.byPitch) {
            all.insert(all.end(), v.begin(), v.end());
        }
        std::printf("| %d | %.1f %% | %.1f %% | %llu | %.0f |\n", period, run.meanLoad, run.maxLoad,
                    static_cast<unsigned long long>(run.xruns), Summarise(all).median);
        std::fflush(stdout);
    }
    const Run baseline = Play(64, shortRun, false, realtime, false);
    std::printf("| 64, without Vocato | %.1f %% | %.1f %% | %llu | - |\n", baseline.meanLoad,
                baseline.maxLoad, static_cast<unsigned long long>(baseline.xruns));
    return 0;
}
