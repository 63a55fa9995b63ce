// The vibrato of the sounding note, for the decision to change notes.
//
// A singer's vibrato swings the pitch by up to a semitone either way, four to eight times a
// second, around a pitch that may lie well off the note. A new note is a pitch that stays; a
// swing comes back. While the pitch has lately turned at a peak and at a trough, half a cycle
// of a vibrato apart, it swings around its mean, and only a pitch beyond where the swings reach
// is a change. The watch follows the pitch itself, not its distance from the note, so a swing
// that did reach the next note and changed it is still seen as the swing it was.
//
// Thread contract: audio thread only; never allocates.
#pragma once

#include <cstdint>

namespace vocato::precise {

class VibratoWatch {
public:
    // A sound from silence, or a leap: nothing is known of its vibrato.
    void Reset() noexcept;
    // The voice stepped `step` semitones beyond its swings; it swings on around the new note.
    void Move(double step) noexcept;
    // One frame's pitch (a fractional note number) at `now` samples. Only a pitch within the
    // note's span moves the mean (by `meanWeight`): the swings of a vibrato leave it on both
    // sides alike, a glide to the next note on one. A pitch `gliding` faster than any vibrato
    // swings (a step, a slide) turns nowhere; since a glide is known only a little after it
    // began, where it may have looked like a turn, a turn counts once the pitch has gone on
    // from it for `settle` samples without one.
    void Follow(double pitch, uint64_t now, uint64_t settle, double meanWeight, bool withinSpan,
                bool gliding) noexcept;
    // Whether the pitch has turned at a peak and at a trough within the last `window` samples,
    // far enough apart to be a swing, and between `shortestHalf` and `longestHalf` samples
    // apart: half a cycle of a vibrato, not the quicker beating of an ensemble.
    bool Swings(uint64_t now, uint64_t window, uint64_t shortestHalf,
                uint64_t longestHalf) const noexcept;
    double Mean() const noexcept { return mean_; }
    // How far the last swings reached from the mean, on the farther side.
    double Reach() const noexcept;

private:
    void SettleTurn() noexcept;

    bool started_ = false;
    int direction_ = 0; // +1 rising, -1 falling, 0 not yet known
    double extreme_ = 0.0; // the farthest pitch in the present direction
    double mean_ = 0.0;
    double peak_ = 0.0;
    double trough_ = 0.0;
    bool havePeak_ = false;
    bool haveTrough_ = false;
    uint64_t peakAt_ = 0;
    uint64_t troughAt_ = 0;
    int turn_ = 0; // a turn not yet settled: +1 at a peak, -1 at a trough
    double turnValue_ = 0.0;
    uint64_t turnAt_ = 0;
};

} // namespace vocato::precise
