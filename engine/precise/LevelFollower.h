// Level and attack detection for the precise tracker.
//
// The peak envelope (instant attack, 23 ms decay) is the level that the note thresholds and
// the velocity and expression mapping read, as in the classic engine. The power of the latest
// period, compared with a slowly rising floor, flags attacks: a repeated note at the same
// pitch shows no pitch change, but its new attack raises the power well above what it just
// was.
//
// Thread contract: audio thread only; never allocates.
#pragma once

#include <cstdint>

namespace vocato::precise {

class LevelFollower {
public:
    void Configure(double rate) noexcept;
    void Push(const int16_t* samples, uint32_t count) noexcept;

    // Once per frame, with the power of the latest period and the samples since the last
    // frame: true on the frame where a new attack is first seen.
    bool Attack(double power, uint32_t samples) noexcept;
    double Peak() const noexcept { return peak_; }

private:
    double dcPole_ = 0.0;
    double peakDecay_ = 0.0;
    double rate_ = 44100.0;
    double previousIn_ = 0.0;
    double previousOut_ = 0.0;
    double peak_ = 0.0;
    double floorPower_ = 0.0;
    bool armed_ = true;
};

} // namespace vocato::precise
