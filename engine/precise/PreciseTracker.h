// The "precise" tracker: normalised square-difference pitch analysis on a decimated copy of
// the input, attack detection on the level, and a note decision with hysteresis, behind the
// same decision interface and parameter codes as the classic engine.
//
// Thread contract: construction allocates everything the tracker will ever need (the worst
// case of every parameter code), off the audio thread. Set, Process and Calc run on one thread
// at a time, the audio thread, and never allocate, lock or block; a change of rate or range
// takes effect at the next Process or Calc and restarts the analysis from silence.
#pragma once

#include "LevelFollower.h"
#include "NoteDecider.h"
#include "PeriodicityAnalyzer.h"
#include "PitchTracker.h"
#include "PreciseSettings.h"

namespace vocato::precise {

class PreciseTracker final : public PitchTracker {
public:
    PreciseTracker();

    int32_t Set(int16_t code, double value) noexcept override;
    void Process(const int16_t* samples, uint32_t byteCount) noexcept override;
    void Calc(WFETMidiOut* out) noexcept override;
    uint32_t DecisionDelaySamples() const noexcept override;

private:
    void ApplyGeometry() noexcept;

    PreciseSettings settings_;
    PeriodicityAnalyzer periodicity_;
    LevelFollower level_;
    NoteDecider decider_;
    uint32_t appliedGeometry_ = ~0u;
    uint32_t samplesSinceCalc_ = 0;
    uint64_t frameCount_ = 0;
    PeriodEstimate estimate_;
    PeriodEstimate residual_;
};

} // namespace vocato::precise
