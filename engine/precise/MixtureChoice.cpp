#include "MixtureChoice.h"

#include <cmath>

namespace vocato::precise {
namespace {

// The cancelled input must be clearly periodic, like a note that may start from silence.
constexpr double kResidualClarity = 0.85;
// And it must carry a real share of the sound: a well cancelled steady note leaves less than
// -15 dB; a new note rising under a released one passes -10 dB within a few periods.
constexpr double kResidualShare = 0.1;
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

MixtureView ChooseSource(const MixtureView& view, double cancelled, double replaced) noexcept
{
    if (cancelled <= 0.0 || view.residualFrequency <= 0.0 || view.residualClarity < kResidualClarity ||
        view.residualShare < kResidualShare) {
        return view;
    }
    const double residual = view.residualFrequency;
    // Left-over harmonics or sub-harmonics of an imperfectly cancelled note, or the note it
    // replaced ringing on, are no new note.
    const auto related = [residual](double other) {
        return other > 0.0 &&
               (Semitones(residual, other) < kSameNote || WholeRatio(residual / other) || WholeRatio(other / residual));
    };
    if (related(cancelled) || related(replaced)) {
        return view;
    }
    const bool ownIsOld = view.frequency <= 0.0 || Semitones(view.frequency, cancelled) < kSameNote;
    const bool ownIsCommon = view.frequency > 0.0 && WholeRatio(residual / view.frequency);
    if (!ownIsOld && !ownIsCommon) {
        return view;
    }
    MixtureView chosen = view;
    chosen.frequency = residual;
    chosen.clarity = view.residualClarity;
    return chosen;
}

} // namespace vocato::precise
