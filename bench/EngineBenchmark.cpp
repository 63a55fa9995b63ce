// Cost of each tracker per second of 44.1 kHz audio, and its worst single frame, on inputs
// that stress them differently: a harmonic tone (few extrema, one good match), pink noise
// (many extrema, many candidates), one-bit dither and digital silence (the classic analysis
// keeps searching the stale ring).
//
//   build/bench/engine_bench --benchmark_counters_tabular=true
#include "PitchTracker.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

namespace {

constexpr int kRate = 44100;

std::vector<int16_t> HarmonicTone() {
    std::vector<int16_t> out(kRate);
    for (int i = 0; i < kRate; ++i) {
        const double phase = 2 * std::numbers::pi * 220.0 * i / kRate;
        out[i] = static_cast<int16_t>(8000 * (std::sin(phase) + 0.5 * std::sin(2 * phase) +
                                              0.3 * std::sin(3 * phase)));
    }
    return out;
}

// Voss-McCartney style pink noise scaled to -30 dBFS rms.
std::vector<int16_t> PinkNoise() {
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> white(-1, 1);
    double rows[16] = {};
    double sum = 0;
    std::vector<double> raw(kRate);
    for (int i = 0; i < kRate; ++i) {
        const int row = std::countr_zero(static_cast<unsigned>(i + 1)) % 16;
        sum -= rows[row];
        rows[row] = white(rng);
        sum += rows[row];
        raw[i] = sum + white(rng);
    }
    double energy = 0;
    for (double v : raw) {
        energy += v * v;
    }
    const double scale = 32768 * std::pow(10.0, -30.0 / 20) / std::sqrt(energy / kRate);
    std::vector<int16_t> out(kRate);
    for (int i = 0; i < kRate; ++i) {
        out[i] = static_cast<int16_t>(std::lround(raw[i] * scale));
    }
    return out;
}

std::vector<int16_t> Dither() {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> bit(-1, 1);
    std::vector<int16_t> out(kRate);
    for (int16_t& v : out) {
        v = static_cast<int16_t>(bit(rng));
    }
    return out;
}

std::vector<int16_t> Silence() { return std::vector<int16_t>(kRate, 0); }

// CPU time of this thread: the worst frame is the engine's own cost, not the time another
// process held the core.
double ThreadMicroseconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e6 + static_cast<double>(t.tv_nsec) * 1e-3;
}

// Voice settings, as a preset feeds them.
void Configure(vocato::PitchTracker& t) {
    const std::pair<int16_t, double> steps[] = {
        {WFET_SAMPLE_RATE, 44100}, {WFET_FILTER_SPAN, 1},      {WFET_MAX_NOTE, 72},
        {WFET_MIN_NOTE, 36},       {WFET_BEND_RANGE, 4},       {WFET_START_LEVEL_DB, -24},
        {WFET_HOLD_LEVEL_DB, -36}, {WFET_START_DISTANCE, 0.1}, {WFET_HOLD_DISTANCE, 0.3},
        {WFET_LAG_WEIGHT, 0.1},    {WFET_START_PERIODS, 2},    {WFET_HOLD_PERIODS, 2},
        {WFET_CONTINUITY, 0.1},    {WFET_LEVEL_CEIL_DB, -6},   {WFET_LEVEL_MODE, 2}};
    for (auto [code, value] : steps) {
        t.Set(code, value);
    }
}

void RunSecond(vocato::PitchTracker& t, const std::vector<int16_t>& audio, WFETMidiOut& out) {
    for (size_t i = 0; i + 16 <= audio.size(); i += 16) {
        t.Process(audio.data() + i, 32);
        t.Calc(&out);
    }
}

template <std::unique_ptr<vocato::PitchTracker> (*MakeTracker)(), std::vector<int16_t> (*Make)()>
void BM_OneSecond(benchmark::State& state) {
    const std::vector<int16_t> audio = Make();
    std::unique_ptr<vocato::PitchTracker> tracker = MakeTracker();
    Configure(*tracker);
    // Prime with a tone so the silence case measures what happens when a singer stops.
    WFETMidiOut out{};
    RunSecond(*tracker, HarmonicTone(), out);
    for (auto _ : state) {
        RunSecond(*tracker, audio, out);
        benchmark::DoNotOptimize(out);
    }
    // One more second, timed frame by frame outside the measured loop: reading the thread
    // clock costs more than a frame.
    double worst = 0;
    for (size_t i = 0; i + 16 <= audio.size(); i += 16) {
        const double start = ThreadMicroseconds();
        tracker->Process(audio.data() + i, 32);
        tracker->Calc(&out);
        worst = std::max(worst, ThreadMicroseconds() - start);
    }
    state.counters["worst_frame_us"] = worst;
    state.counters["x_realtime"] = benchmark::Counter(
        static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

#define VOCATO_TRACKER_BENCHMARKS(name, make)                                                      \
    BENCHMARK(BM_OneSecond<make, HarmonicTone>)->Name(name "/harmonic_tone")->Unit(benchmark::kMillisecond); \
    BENCHMARK(BM_OneSecond<make, PinkNoise>)->Name(name "/pink_noise_-30dBFS")->Unit(benchmark::kMillisecond); \
    BENCHMARK(BM_OneSecond<make, Dither>)->Name(name "/one_bit_dither")->Unit(benchmark::kMillisecond); \
    BENCHMARK(BM_OneSecond<make, Silence>)->Name(name "/digital_silence")->Unit(benchmark::kMillisecond)

VOCATO_TRACKER_BENCHMARKS("classic", vocato::MakeClassicTracker);
VOCATO_TRACKER_BENCHMARKS("precise", vocato::MakePreciseTracker);

} // namespace

BENCHMARK_MAIN();
