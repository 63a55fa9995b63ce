#include "LevelFollower.h"

#include "SinkingPeak.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vocato::precise {
namespace {

// The classic engine's envelope decays by 1023/1024 per sample at 44.1 kHz: 23 ms.
constexpr double kPeakDecaySeconds = 0.0232;
// A rise is measured from the lowest power of this long before it (the gap or the decay before
// a new attack): a re-articulated note comes back within some tens of milliseconds, and a
// floor that crept up behind it would hide the rise.
constexpr double kFloorSeconds = 0.03;
// An attack is a power rise of 6 dB (twice the amplitude) over the floor; the detector re-arms once the power has
// settled to within 2 dB of the floor, so one attack fires once.
constexpr double kAttackDb = 6.0;
const double kRearmRatio = std::pow(10.0, 0.2);
// A sound whose level keeps swelling and sinking on its own (voices beating against each
// other, a chorus) stands above its recent minimum much of the time. The median of that
// height, followed at up to 20 dB per second, says how rough the level is; an attack must rise
// three times as much further, about one and a half of the sound's own swings.
constexpr double kRoughnessDbPerSecond = 20.0;
constexpr double kRoughnessWeight = 3.0;
// The ceiling follows the power up at once and down by 20 dB per second, faster than a held
// note fades (a bass string, a decaying piano-like sample) and far slower than a release
// (hundreds of dB per second). A release is a fall of 9 dB below the ceiling; the detector
// re-arms once the power reaches the ceiling again.
constexpr double kCeilingFallDbPerSecond = 20.0;
const double kReleaseRatio = std::pow(10.0, -0.9);
// What rings on after a release, or after a note broke off in a room, lies 6 dB or more under
// the ceiling; a note struck again comes back to within that of where it was.
const double kFadedRatio = std::pow(10.0, -0.6);
// What is left once a sound has stopped (a voiced consonant between two sung syllables, a
// room's murmur) lies 20 dB or more under the ceiling, as far as the start level sets a quiet
// sound below the performance; the peak envelope, falling over tens of milliseconds, still reads
// the sound before. While it does not grow by an attack's 6 dB over the floor, it is only that.
const double kLeftOverRatio = 0.01;
const double kGrowingRatio = std::pow(10.0, kAttackDb / 10.0);
// A held note never falls by 100 dB per second for 40 ms on end: a lifted bow, a stopped
// breath or a damped string does, and such a free decay is a release as soon as it lies as
// far under the ceiling as a faded sound, before the 9 dB that slower falls need. The fall is
// judged over five steps of 8 ms, each at least 0.8 dB, so the beats of an ensemble or a
// shallow tremolo, which turn back within a few steps, do not pass for one. A tremolo that
// swings 9 dB or more at 6 Hz falls that fast for long enough, and ends its note in a trough.
constexpr double kSteadyStepSeconds = 0.008;
constexpr double kSteadyStepDb = 0.8;
// Rumble and offsets below 20 Hz say nothing about attacks.
constexpr double kDcCutHz = 20.0;
// Power below -80 dB full scale is silence, whatever its relative changes.
constexpr double kSilentPower = 32768.0 * 32768.0 * 1e-8;

} // namespace

void LevelFollower::Configure(double rate) noexcept
{
    dcPole_ = std::exp(-2.0 * std::numbers::pi * kDcCutHz / rate);
    peakDecay_ = std::exp(-1.0 / (kPeakDecaySeconds * rate));
    rate_ = rate;
    previousIn_ = previousOut_ = 0.0;
    peak_ = ceilingPower_ = 0.0;
    lowestBefore_.fill(0.0);
    nextLowest_ = 0;
    lowest_ = lowestSeconds_ = 0.0;
    roughnessDb_ = 0.0;
    armed_ = releaseArmed_ = true;
    stepPower_.fill(0.0);
    stepSeconds_ = 0.0;
}

void LevelFollower::Push(const int16_t* samples, uint32_t count) noexcept
{
    for (uint32_t i = 0; i < count; ++i) {
        const double in = samples[i];
        const double x = in - previousIn_ + dcPole_ * previousOut_;
        previousIn_ = in;
        previousOut_ = x;
        const double magnitude = std::abs(x);
        peak_ = magnitude > peak_ ? magnitude : magnitude + peakDecay_ * (peak_ - magnitude);
    }
}

double LevelFollower::FollowFloor(double power, double seconds) noexcept
{
    lowest_ = lowestSeconds_ > 0.0 ? std::min(lowest_, power) : power;
    lowestSeconds_ += seconds;
    if (lowestSeconds_ >= kFloorSeconds / double(lowestBefore_.size())) {
        lowestBefore_[nextLowest_] = lowest_;
        nextLowest_ = (nextLowest_ + 1) % lowestBefore_.size();
        lowestSeconds_ = 0.0;
    }
    return std::min(lowest_, *std::min_element(lowestBefore_.begin(), lowestBefore_.end()));
}

bool LevelFollower::FallsSteadily(double power, double seconds, double marginDb) noexcept
{
    stepSeconds_ += seconds;
    if (stepSeconds_ >= kSteadyStepSeconds) {
        stepSeconds_ -= kSteadyStepSeconds;
        std::copy_backward(stepPower_.begin(), stepPower_.end() - 1, stepPower_.end());
        stepPower_[0] = power;
    }
    // A less periodic sound swells and sinks on its own: its fall must be the margin steeper.
    const double stepDb = kSteadyStepDb + marginDb / double(stepPower_.size());
    const double stepRatio = std::pow(10.0, -stepDb / 10.0);
    double newer = power;
    for (const double older : stepPower_) {
        if (newer >= stepRatio * older) {
            return false;
        }
        newer = older;
    }
    return true;
}

LevelFollower::Events LevelFollower::Follow(double power, uint32_t samples, double marginDb) noexcept
{
    const double margin = std::pow(10.0, marginDb / 10.0);
    const double seconds = double(samples) / rate_;
    const double floor = FollowFloor(power, seconds);
    ceilingPower_ = SinkingPeak(ceilingPower_, power, kCeilingFallDbPerSecond, seconds);
    Events events;
    events.faded = power * margin < kFadedRatio * ceilingPower_;
    events.leftOver = power < kLeftOverRatio * ceilingPower_ && power < kGrowingRatio * floor;
    if (power < kSilentPower) {
        armed_ = true;
        return events;
    }
    const double ratio = power / std::max(floor, kSilentPower);
    const double riseDb = 10.0 * std::log10(ratio);
    // A step towards the new height, up or down, settles where half the heights lie above.
    const double step = kRoughnessDbPerSecond * seconds;
    roughnessDb_ = std::max(0.0, roughnessDb_ + (riseDb > roughnessDb_ ? step : -step));
    if (armed_ && riseDb > kAttackDb + marginDb + kRoughnessWeight * roughnessDb_) {
        armed_ = false;
        events.attack = true;
    } else if (ratio < kRearmRatio) {
        armed_ = true;
    }
    const bool steadyFall = FallsSteadily(power, seconds, marginDb) && events.faded;
    if (releaseArmed_ && (power * margin < kReleaseRatio * ceilingPower_ || steadyFall)) {
        releaseArmed_ = false;
        events.release = true;
    } else if (power >= ceilingPower_) {
        releaseArmed_ = true;
    }
    return events;
}

} // namespace vocato::precise
