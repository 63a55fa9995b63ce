#include "MixtureChoice.h"

#include <cmath>

namespace vocato::precise {
namespace {

// The cancelled input must be periodic, if less clearly than a note from silence: what is
// left of the old note disturbs it.
constexpr double kResidualClarity = 0.75;
// And it must carry a real share of the sound: a well cancelled steady note leaves less than
// -15 dB; a new note rising under a released one passes -8 dB within a few periods.
constexpr double kResidualShare = 0.15;
// Pitches closer than this (semitones) count as the same note.
constexpr double kSameNote = 0.75;
// Frequency ratios within this relative distance of a whole number count as harmonic.
constexpr double kHarmonicTolerance = 0.03;

double Semitones(double a, double b) { return std::abs(12.0 * std::log2(a / b)); }

bool WholeRatio(double ratio)
{
    const double nearest = std::round(ratio);
    return nearest >= 2.0 && std::abs(ratio - nearest) < kHarmonicTolerance * nearest;
}

} // namespace

MixtureView ChooseSource(const MixtureView& view, double cancelled) noexcept
{
    if (cancelled <= 0.0 || view.residualFrequency <= 0.0 || view.residualClarity < kResidualClarity ||
        view.residualShare < kResidualShare) {
        return view;
    }
    const double residual = view.residualFrequency;
    // Left-over harmonics or sub-harmonics of an imperfectly cancelled note are no new note.
    if (Semitones(residual, cancelled) < kSameNote || WholeRatio(residual / cancelled) ||
        WholeRatio(cancelled / residual)) {
        return view;
    }
    // The input's own estimate may still be the old note, a common sub-harmonic of both, or
    // the new note itself but less clearly, because the old one disturbs it.
    const bool ownIsOld = view.frequency <= 0.0 || Semitones(view.frequency, cancelled) < kSameNote;
    const bool ownIsCommon = view.frequency > 0.0 && WholeRatio(residual / view.frequency);
    const bool ownIsNew = view.frequency > 0.0 && Semitones(view.frequency, residual) < kSameNote &&
                          view.clarity < view.residualClarity;
    if (!ownIsOld && !ownIsCommon && !ownIsNew) {
        return view;
    }
    MixtureView chosen = view;
    chosen.frequency = residual;
    chosen.clarity = view.residualClarity;
    return chosen;
}

} // namespace vocato::precise
