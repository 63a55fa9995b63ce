#include "MixtureChoice.h"

#include <algorithm>
#include <cmath>

namespace vocato::precise {
namespace {

// The cancelled input must be periodic, if less clearly than a note from silence: what is
// left of the old note disturbs it.
constexpr double kResidualClarity = 0.75;
// And it must carry a real share of the sound: a well cancelled steady note leaves less than
// -15 dB, so -11 dB is already something new; a note rising under a released one gets there
// within a few periods of its attack, well before it outweighs the old one.
constexpr double kResidualShare = 0.08;
// Pitches closer than this (semitones) count as the same note.
constexpr double kSameNote = 0.75;
// Two notes this close (semitones) beat within one analysis window: their mixture shows one
// period between the two.
constexpr double kBlendSpan = 2.5;
// A blend lies between the two notes, and the input with the old one cancelled shows the new
// one: where that agrees with the input's own estimate to within a quarter tone, the estimate
// is the new note and no blend.
constexpr double kAgreeSpan = 0.5;
// The comb cancels a note only at its own period: an input whose own estimate lies this far
// (semitones) from the cancelled pitch is not that note alone, but shows a note close to it
// blending in.
constexpr double kOwnMoved = 0.25;
// A trace of another sound: as periodic as a held note must stay, and above the -15 dB a well
// cancelled steady note leaves.
constexpr double kTraceClarity = 0.6;
constexpr double kTraceShare = 0.03;
// The comb cancels a note at the period of its last cycle, and a voice's next cycle is a little
// longer or shorter (by half a percent in a healthy voice). At a low note what that leaves is
// up to -5 dB, reads up to a semitone from the note and holds for a cycle, as long as a change
// needs to be confirmed. While the input's own estimate is still the cancelled note and this
// periodic, what is left that close to it is that remainder.
constexpr double kOwnClear = 0.97;
constexpr double kRemainderSpan = 1.0;
// Frequency ratios within this relative distance of a whole number count as harmonic.
constexpr double kHarmonicTolerance = 0.03;

double Semitones(double a, double b) { return std::abs(12.0 * std::log2(a / b)); }

// What is left with the old note cancelled is a sound of its own: periodic, and a real share
// of the input.
bool ResidualIsASound(const MixtureView& view)
{
    return view.residualFrequency > 0.0 && view.residualClarity >= kResidualClarity &&
           view.residualShare >= kResidualShare;
}

// The note the decision should see at `frequency`, as periodic as what is left.
MixtureView FromResidual(const MixtureView& view, double frequency)
{
    MixtureView chosen = view;
    chosen.frequency = frequency;
    chosen.clarity = view.residualClarity;
    return chosen;
}

// The pitch on the harmonic or the sub-harmonic series of `residual` nearest `frequency`.
double NearestOnSeries(double residual, double frequency)
{
    return frequency > residual ? residual * std::round(frequency / residual)
                                : residual / std::round(residual / frequency);
}

} // namespace

bool WholeRatio(double ratio) noexcept
{
    const double nearest = std::round(ratio);
    return nearest >= 2.0 && std::abs(ratio - nearest) < kHarmonicTolerance * nearest;
}

MixtureView ChooseSource(const MixtureView& view, double cancelled, double previous, double previousNote) noexcept
{
    if (cancelled <= 0.0 || !ResidualIsASound(view)) {
        return view;
    }
    const double residual = view.residualFrequency;
    // Left-over harmonics or sub-harmonics of an imperfectly cancelled note, and the note
    // before it ringing on, are no new note.
    const auto related = [residual](double other) {
        return other > 0.0 &&
               (Semitones(residual, other) < kSameNote || WholeRatio(residual / other) || WholeRatio(other / residual));
    };
    if (related(cancelled) || related(previous) || related(previousNote)) {
        return view;
    }
    // The input's own estimate may still be the old note, a common sub-harmonic of both, or
    // anything less periodic than what is left with the old note cancelled.
    const double ownMoved = view.frequency > 0.0 ? Semitones(view.frequency, cancelled) : 0.0;
    const bool ownClearlyOld = view.frequency > 0.0 && ownMoved < kOwnMoved && view.clarity >= kOwnClear;
    if (ownClearlyOld && Semitones(residual, cancelled) < kRemainderSpan) {
        return view;
    }
    const bool ownIsOld = view.frequency <= 0.0 || ownMoved < kSameNote;
    const bool ownIsCommon = view.frequency > 0.0 && WholeRatio(residual / view.frequency);
    // Two notes this close beat, and their mixture repeats at a period between the two that
    // moves as they beat; its periodicity says nothing against the new note.
    const bool ownIsBlend = view.frequency > 0.0 && Semitones(residual, cancelled) < kBlendSpan &&
                            (view.frequency - residual) * (view.frequency - cancelled) < 0.0;
    // Cancelling one note leaves the others changed: a note that already dominates the input
    // may show only at a multiple of its period once the old one is taken out. That is no new
    // sound; a new one would make the input's own period the common multiple, not a fraction.
    // What is left repeats as clearly as that note does, so it counts at that periodicity.
    const bool ownRepeatsInIt = view.frequency > 0.0 && WholeRatio(view.frequency / residual);
    if (!ownIsOld && ownRepeatsInIt) {
        MixtureView own = view;
        own.clarity = std::max(view.clarity, view.residualClarity);
        return own;
    }
    // The comb also takes down most of the fundamental of a note close to the cancelled one.
    // The input's own estimate, that note or its blend with the old one, then lies between a
    // quarter semitone from the cancelled pitch and the span where two notes blend, and what
    // is left shows the new note only at a whole multiple or fraction of its period, as the
    // partials the comb spares happen to fall (a strong second harmonic left alone repeats at
    // half its period). The new note is the member of what is left's series nearest the own
    // estimate; a common sub-harmonic of old and new lies an octave or more under the old
    // note, outside that span.
    const bool ownNearby = ownMoved >= kOwnMoved && ownMoved < kBlendSpan;
    if (ownNearby && (ownRepeatsInIt || ownIsCommon)) {
        return FromResidual(view, NearestOnSeries(residual, view.frequency));
    }
    // Or what is left repeats at two or three of such a note's periods: the comb weakens its
    // fundamental under a partial off its harmonic series (a flute's edge tone at one and a
    // half times the note, for the first tens of milliseconds). The own estimate has moved
    // from the cancelled pitch towards the new note, which is the multiple of what is left
    // beyond that estimate and within the blend span.
    if (ownNearby) {
        for (const double periods : {2.0, 3.0}) {
            const double multiple = residual * periods;
            const double apart = Semitones(multiple, cancelled);
            const bool beyondOwn = (view.frequency - cancelled) * (multiple - view.frequency) > 0.0;
            if (apart >= kSameNote && apart < kBlendSpan && beyondOwn) {
                return FromResidual(view, multiple);
            }
        }
    }
    if (!ownIsOld && !ownIsCommon && !ownIsBlend && view.clarity >= view.residualClarity) {
        return view;
    }
    return FromResidual(view, residual);
}

bool ResidualHoldsAnother(const MixtureView& view) noexcept
{
    return view.residualFrequency > 0.0 && view.residualClarity >= kTraceClarity &&
           view.residualShare >= kTraceShare &&
           (view.frequency <= 0.0 ||
            Semitones(view.residualFrequency, view.frequency) >= kAgreeSpan);
}

Hidden HiddenByMixture(const MixtureView& view, double sounding, double replaced, double cancelled) noexcept
{
    const double own = view.frequency;
    if (own <= 0.0) {
        return Hidden::No;
    }
    if (sounding > 0.0 && WholeRatio(sounding / own) && sounding / own > 2.5) {
        return Hidden::BySubharmonic;
    }
    if (replaced > 0.0 && (Semitones(own, replaced) < kSameNote || WholeRatio(replaced / own))) {
        return Hidden::ByNeighbour;
    }
    const double fromCancelled = cancelled > 0.0 ? Semitones(own, cancelled) : 0.0;
    if (fromCancelled < kSameNote || fromCancelled >= kBlendSpan) {
        return Hidden::No;
    }
    const bool residualAgrees = ResidualIsASound(view) && Semitones(view.residualFrequency, own) < kAgreeSpan;
    return residualAgrees ? Hidden::No : Hidden::ByNeighbour;
}

} // namespace vocato::precise
