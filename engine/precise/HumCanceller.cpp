#include "HumCanceller.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vocato::precise {
namespace {

constexpr double kMains[2] = {50.0, 60.0};
// While listening, the lock-ins average over a quarter of a second of quiet input, and hum
// is heard once they have a tenth of a second of it (a weight of 0.3) holding at least half
// of its power, at least 2 LSB rms: below that, hum costs nothing.
constexpr double kRestingSeconds = 0.25;
constexpr double kHeardWeight = 0.3;
constexpr double kHeardShare = 0.5;
constexpr double kAudiblePower = 4.0;
// Once heard, the hum is followed over half a second while something plays (over a quarter
// while nothing does): its sixth partial, 0.03 Hz off the nominal mains, then lags by half a
// radian. Much longer, and a drifting mains frequency is not followed; much shorter, and a
// note's partial near a multiple of the mains is learnt as hum.
constexpr double kPlayingSeconds = 0.5;
// The input rests at its quiet floor when its power over 10 ms is within 6 dB of the lowest
// of the last ten seconds: longer than a held note, so that a note is never the floor, and
// short enough to follow a background that grows. The power smoother's rise from nothing at
// the start is not the floor.
constexpr double kPowerSeconds = 0.01;
constexpr double kFloorMargin = 4.0;
constexpr double kFloorSeconds = 10.0;
constexpr double kWarmUpSeconds = 0.03;
// The phasors are renormalised this often, against rounding creeping into their magnitude.
constexpr int kRenormaliseSamples = 1024;

} // namespace

void HumCanceller::Configure(double rate) noexcept
{
    for (int s = 0; s < 2; ++s) {
        series_[s] = Series{};
        series_[s].step = std::polar(1.0, 2.0 * std::numbers::pi * kMains[s] / rate);
    }
    chosen_ = -1;
    restingLearn_ = 1.0 - std::exp(-1.0 / (kRestingSeconds * rate));
    playingLearn_ = 1.0 - std::exp(-1.0 / (kPlayingSeconds * rate));
    powerKeep_ = std::exp(-1.0 / (kPowerSeconds * rate));
    power_ = 0.0;
    floorBlockSamples_ = std::max(1, static_cast<int>(kFloorSeconds / kFloorBlocks * rate));
    floorBlocks_.fill(HUGE_VAL);
    floorBlock_ = 0;
    blockLowest_ = blocksLowest_ = HUGE_VAL;
    inBlock_ = 0;
    warmUp_ = static_cast<int>(kWarmUpSeconds * rate);
    quietPower_ = quietWeight_ = 0.0;
    sinceRenormalise_ = 0;
}

double HumCanceller::Follow(Series& series, double x, double learn) noexcept
{
    double hum = 0.0;
    std::complex<double> q = series.phase;
    for (std::complex<double>& partial : series.partial) {
        hum += 2.0 * (partial.real() * q.real() - partial.imag() * q.imag());
        partial += learn * (x * std::conj(q) - partial);
        q *= series.phase;
    }
    series.phase *= series.step;
    return hum;
}

double HumCanceller::Power(const Series& series) noexcept
{
    double power = 0.0;
    for (const std::complex<double>& partial : series.partial) {
        power += 2.0 * std::norm(partial);
    }
    return power;
}

double HumCanceller::Amplitude() const noexcept
{
    double amplitude = 0.0;
    if (chosen_ >= 0) {
        for (const std::complex<double>& partial : series_[chosen_].partial) {
            amplitude += 2.0 * std::abs(partial);
        }
    }
    return amplitude;
}

bool HumCanceller::Quiet(double x) noexcept
{
    power_ = powerKeep_ * power_ + (1.0 - powerKeep_) * x * x;
    if (warmUp_ > 0) {
        --warmUp_;
    } else {
        blockLowest_ = std::min(blockLowest_, power_);
    }
    if (++inBlock_ == floorBlockSamples_) {
        floorBlocks_[floorBlock_] = blockLowest_;
        floorBlock_ = (floorBlock_ + 1) % kFloorBlocks;
        blockLowest_ = HUGE_VAL;
        inBlock_ = 0;
        blocksLowest_ = *std::min_element(floorBlocks_.begin(), floorBlocks_.end());
    }
    return power_ <= kFloorMargin * std::min(blockLowest_, blocksLowest_);
}

void HumCanceller::Listen(double x) noexcept
{
    if (!Quiet(x)) {
        for (Series& series : series_) {
            series.phase *= series.step;
        }
        return;
    }
    for (Series& series : series_) {
        Follow(series, x, restingLearn_);
    }
    quietPower_ += restingLearn_ * (x * x - quietPower_);
    quietWeight_ += restingLearn_ * (1.0 - quietWeight_);
}

void HumCanceller::DecideHeard() noexcept
{
    if (quietWeight_ < kHeardWeight || quietPower_ <= kAudiblePower * quietWeight_) {
        return;
    }
    // The lock-ins and the quiet power average the same samples with the same weights; the
    // lock-ins' power grows with the square of the weight, the quiet power with the weight.
    const int louder = Power(series_[1]) > Power(series_[0]) ? 1 : 0;
    if (Power(series_[louder]) >= kHeardShare * quietWeight_ * quietPower_) {
        chosen_ = louder;
    }
}

double HumCanceller::Run(double x) noexcept
{
    double hum = 0.0;
    if (chosen_ >= 0) {
        hum = Follow(series_[chosen_], x, Quiet(x) ? restingLearn_ : playingLearn_);
    } else {
        Listen(x);
    }
    if (++sinceRenormalise_ == kRenormaliseSamples) {
        sinceRenormalise_ = 0;
        for (Series& series : series_) {
            series.phase /= std::abs(series.phase);
        }
        if (chosen_ < 0) {
            DecideHeard();
        }
    }
    return x - hum;
}

} // namespace vocato::precise
