// Hostile input: random samples and random parameter values never crash the engine (the
// sanitizer build catches reads outside the ring) and every output stays in its range.
#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace {

using namespace enginetest;

// Special values, or uniform values at one of three scales.
double HostileValue(std::mt19937& rng) {
    using limits = std::numeric_limits<double>;
    constexpr double inf = limits::infinity(), nan = limits::quiet_NaN();
    constexpr double specials[] = {0.0,    -0.0, 1e-300, -1e-300, 1e300,
                                   -1e300, inf,  -inf,   nan,     limits::denorm_min()};
    const int pick = std::uniform_int_distribution<int>(0, 3)(rng);
    if (pick == 0) {
        return specials[std::uniform_int_distribution<size_t>(0, std::size(specials) - 1)(rng)];
    }
    const double scale = pick == 1 ? 2 : pick == 2 ? 200 : 300000;
    return std::uniform_real_distribution<double>(-scale, scale)(rng);
}

TEST(Robustness, RandomSamplesAndParametersKeepEveryOutputInRange) {
    std::mt19937 rng(1234);
    std::uniform_int_distribution<int> code(-2, 45);
    std::uniform_int_distribution<int> sample(-32768, 32767);
    std::uniform_int_distribution<int> style(0, 3);
    for (int round = 0; round < 40; ++round) {
        EnginePtr s = VoiceEngine();
        WFETMidiOut out{-1, -1, 0, 8192, 0};
        std::vector<int16_t> chunk(16);
        for (int frame = 0; frame < 3000; ++frame) {
            if (frame % 50 == 0) {
                WFETSet(s.get(), static_cast<int16_t>(code(rng)), HostileValue(rng));
            }
            const int kind = style(rng);
            for (size_t i = 0; i < chunk.size(); ++i) {
                // Full-scale noise, square-ish extremes, or a slow ramp.
                chunk[i] = kind == 0   ? static_cast<int16_t>(sample(rng))
                           : kind == 1 ? static_cast<int16_t>((frame / 3 + i) % 2 ? 32767 : -32768)
                           : kind == 2 ? static_cast<int16_t>((frame * 16 + i) % 400 - 200)
                                       : int16_t{0};
            }
            const uint32_t bytes = std::uniform_int_distribution<uint32_t>(0, 32)(rng);
            WFETProcess(s.get(), chunk.data(), bytes);
            WFETCalc(s.get(), &out);
            ASSERT_TRUE(out.noteOff >= -1 && out.noteOn >= -1);
            ASSERT_TRUE(out.velocity >= 0 && out.velocity <= 127);
            ASSERT_TRUE(out.bend >= 0 && out.bend <= 16383);
            ASSERT_TRUE(out.expression >= 0 && out.expression <= 127);
            ASSERT_LT(s->head, static_cast<uint32_t>(kWFETRingSize));
        }
    }
}

} // namespace
