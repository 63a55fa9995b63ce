// Level and attack detection for the precise tracker.
//
// The peak envelope (instant attack, 23 ms decay) is the level that the note thresholds and
// the velocity and expression mapping read, as in the classic engine. The power of the latest
// period flags attacks and releases: a repeated note at the same pitch shows no pitch change,
// but its new attack raises the power well above what it just was; and a released note rings
// on in its release or in the room, periodic and loud enough, but its power falls far faster
// than a held note's ever does.
//
// Thread contract: audio thread only; never allocates.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vocato::precise {

class LevelFollower {
public:
    void Configure(double rate) noexcept;
    void Push(const int16_t* samples, uint32_t count) noexcept;

    struct Events {
        bool attack = false;   // on the frame where a new attack is first seen
        bool release = false;  // on the frame where a release is first seen
        bool faded = false;    // while the power lies well under the ceiling, as in a release
        bool leftOver = false; // far under the ceiling and not growing: what a sound left
    };

    // Once per frame, with the power of the latest period, the samples since the last frame
    // and a margin (dB) by which both the attack and the release thresholds grow.
    Events Follow(double power, uint32_t samples, double marginDb) noexcept;

    double Peak() const noexcept { return peak_; }

private:
    // The lowest power within the attack window, this frame's included.
    double FollowFloor(double power, double seconds) noexcept;
    // Records the power at each step's start; whether it has fallen by at least a release's
    // rate over each of the last steps.
    bool FallsSteadily(double power, double seconds, double marginDb) noexcept;

    double dcPole_ = 0.0;
    double peakDecay_ = 0.0;
    double rate_ = 44100.0;
    double previousIn_ = 0.0;
    double previousOut_ = 0.0;
    double peak_ = 0.0;
    // The lowest power of each of the last few stretches of the attack window, and of the
    // stretch under way.
    std::array<double, 6> lowestBefore_{};
    std::size_t nextLowest_ = 0;
    double lowest_ = 0.0;
    double lowestSeconds_ = 0.0;
    double roughnessDb_ = 0.0; // the median height of the power above that lowest, dB
    double ceilingPower_ = 0.0;
    bool armed_ = true;
    bool releaseArmed_ = true;
    // The power at the start of each of the last few steps of a steady fall, newest first.
    std::array<double, 5> stepPower_{};
    double stepSeconds_ = 0.0;
};

} // namespace vocato::precise
