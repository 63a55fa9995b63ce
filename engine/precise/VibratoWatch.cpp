#include "VibratoWatch.h"

#include <algorithm>
#include <cmath>

namespace vocato::precise {
namespace {

// A turn is seen once the pitch has come back this far (semitones) from its extreme, so the
// jitter of a held pitch turns nothing.
constexpr double kTurn = 0.05;
// No vibrato moves the pitch this far (semitones) from one frame to the next: that is a jump
// from one sound to another (a new note over a fading one), no turn of a swing; the turns are
// looked for afresh from there, as after a glide.
constexpr double kLeap = 0.3;
// A swing is at least this wide, peak to trough (semitones).
constexpr double kLeastSwing = 0.3;

} // namespace

void VibratoWatch::Reset() noexcept { *this = VibratoWatch{}; }

void VibratoWatch::Move(double step) noexcept
{
    mean_ += step;
    peak_ += step;
    trough_ += step;
}

void VibratoWatch::Follow(double pitch, uint64_t now, uint64_t settle, double meanWeight, bool withinSpan,
                          bool gliding) noexcept
{
    if (!started_) {
        started_ = true;
        extreme_ = mean_ = pitch;
        return;
    }
    if (gliding || std::abs(pitch - extreme_) > kLeap) {
        // A glide that goes on the way the pitch took from the last turn began there; one that
        // goes back came after it.
        if (turn_ != 0 && direction_ * (pitch - extreme_) < 0.0) {
            SettleTurn();
        }
        direction_ = 0;
        turn_ = 0;
        extreme_ = pitch;
        return;
    }
    if (withinSpan) {
        mean_ += meanWeight * (pitch - mean_);
    }
    if (turn_ != 0 && now - turnAt_ >= settle) {
        SettleTurn();
    }
    if (direction_ == 0 && std::abs(pitch - extreme_) > kTurn) {
        direction_ = pitch > extreme_ ? 1 : -1;
    }
    if (direction_ * (pitch - extreme_) > 0.0) {
        extreme_ = pitch;
    } else if (direction_ != 0 && direction_ * (extreme_ - pitch) > kTurn) {
        turn_ = direction_;
        turnValue_ = extreme_;
        turnAt_ = now;
        direction_ = -direction_;
        extreme_ = pitch;
    }
}

void VibratoWatch::SettleTurn() noexcept
{
    (turn_ > 0 ? peak_ : trough_) = turnValue_;
    (turn_ > 0 ? peakAt_ : troughAt_) = turnAt_;
    (turn_ > 0 ? havePeak_ : haveTrough_) = true;
    turn_ = 0;
}

bool VibratoWatch::Swings(uint64_t now, uint64_t window, uint64_t shortestHalf,
                          uint64_t longestHalf) const noexcept
{
    if (!havePeak_ || !haveTrough_ || now - std::min(peakAt_, troughAt_) >= window ||
        peak_ - trough_ < kLeastSwing) {
        return false;
    }
    const uint64_t half = peakAt_ > troughAt_ ? peakAt_ - troughAt_ : troughAt_ - peakAt_;
    return half >= shortestHalf && half <= longestHalf;
}

double VibratoWatch::Reach() const noexcept { return std::max(peak_ - mean_, mean_ - trough_); }

} // namespace vocato::precise
