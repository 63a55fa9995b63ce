#include "PreciseTracker.h"

#include "MixtureChoice.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace vocato::precise {
namespace {

// The attack detector follows the power of one period of the estimate (5 ms without one). An
// estimate at a harmonic of the note still ringing (its tail read at the twelfth) spans only a
// part of that note's waveform, whose power swings with the part from frame to frame: it would
// sink the floor an attack rises from, and the next whole period would pass for an attack. The
// ringing note's period is measured then.
double AttackSpan(double estimate, double ringing)
{
    if (estimate <= 0.0) {
        return 0.005;
    }
    return ringing > 0.0 && WholeRatio(estimate / ringing) ? 1.0 / ringing : 1.0 / estimate;
}

} // namespace

PreciseTracker::PreciseTracker()
{
    ApplyGeometry();
}

int32_t PreciseTracker::Set(int16_t code, double value) noexcept
{
    return settings_.Set(code, value);
}

void PreciseTracker::ApplyGeometry() noexcept
{
    if (appliedGeometry_ == settings_.geometryVersion) {
        return;
    }
    appliedGeometry_ = settings_.geometryVersion;
    periodicity_.Configure(settings_.sampleRate, settings_.minFreq, settings_.maxFreq);
    level_.Configure(settings_.sampleRate);
    estimate_ = residual_ = {};
}

void PreciseTracker::Process(const int16_t* samples, uint32_t byteCount) noexcept
{
    ApplyGeometry();
    const uint32_t count = byteCount / 2;
    periodicity_.Push(samples, count);
    level_.Push(samples, count);
    samplesSinceCalc_ += count;
}

void PreciseTracker::Calc(WFETMidiOut* out) noexcept
{
    ApplyGeometry();
    // Both analyses run every other frame (0.7 ms at 44.1 kHz), on the same one so that they
    // describe the same moment: a period tracker needs more than a period of a new sound
    // before it can name it, so a fraction of a millisecond more hardly delays a note, and it
    // halves the cost of the analysis.
    if ((frameCount_++ & 1) == 0) {
        estimate_ = periodicity_.Analyse(decider_.SoundingFrequency());
        residual_ = periodicity_.AnalyseResidual();
    }
    const PeriodEstimate& estimate = estimate_;
    const PeriodEstimate& residual = residual_;
    FrameFeatures frame;
    frame.frequency = estimate.frequency;
    frame.clarity = estimate.clarity;
    frame.octaveBelow = estimate.octaveBelow;
    frame.residualFrequency = residual.frequency;
    frame.residualClarity = residual.clarity;
    // Over one period of what remains (5 ms without one), which has no ripple within it.
    const double residualSpan = residual.frequency > 0.0 ? 1.0 / residual.frequency : 0.005;
    frame.residualPower = periodicity_.RecentResidualPower(residualSpan);
    if (residual.frequency > 0.0) {
        frame.residualShare = frame.residualPower / std::max(1e-9, periodicity_.RecentPower(residualSpan));
    }
    // The level is the input's own; hum, which the analysis no longer sees, must not lift it
    // over the thresholds either.
    frame.level = std::max(0.0, level_.Peak() - periodicity_.HumAmplitude());
    frame.power = periodicity_.RecentPower(AttackSpan(estimate.frequency, decider_.RingingFrequency()));
    const LevelFollower::Events events =
        level_.Follow(frame.power, samplesSinceCalc_, decider_.LevelMarginDb());
    frame.attack = events.attack;
    frame.release = events.release;
    frame.faded = events.faded;
    frame.leftOver = events.leftOver;
    frame.samples = samplesSinceCalc_;
    samplesSinceCalc_ = 0;
    decider_.Decide(settings_, frame, out);
    periodicity_.SetCancelledFrequency(decider_.RingingFrequency());
}

uint32_t PreciseTracker::DecisionDelaySamples() const noexcept
{
    // For a note in the middle of the range (geometric mean): its periodicity passes the start
    // threshold once a period and most of its window (one period, at most the longest window)
    // fill the analysis, then it must hold for the confirmation, and the analysis that reports
    // it runs every other frame, up to 32 samples later.
    const double lo = std::max(14.0, std::min(settings_.minFreq, settings_.maxFreq));
    const double hi = std::max(lo, std::max(settings_.minFreq, settings_.maxFreq));
    const double period = 1.0 / std::sqrt(lo * hi);
    const double seconds = period + 0.75 * std::min(period, PeriodicityAnalyzer::kLongestWindowSeconds) +
                           NoteDecider::kConfirmSeconds;
    return static_cast<uint32_t>(seconds * settings_.sampleRate) + 2 * kWFETFrameSamples;
}

} // namespace vocato::precise

namespace vocato {

std::unique_ptr<PitchTracker> MakePreciseTracker()
{
    try {
        return std::make_unique<precise::PreciseTracker>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace vocato
