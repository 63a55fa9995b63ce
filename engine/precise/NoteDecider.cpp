#include "NoteDecider.h"

#include "MixtureChoice.h"
#include "SinkingPeak.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vocato::precise {
namespace {

// Periodicity (normalised, 1 = exact repetition) needed to start a note and to keep one.
// Noise scores near 0, a clean tone near 1, a voice with breath or a 20 dB noise floor
// around 0.9.
constexpr double kStartClarity = 0.85;
constexpr double kHoldClarity = 0.6;
// Steady means the pitch stays within this span: a glide, or the mixture of a released note
// with the next one, moves further and restarts the confirmation.
constexpr double kSteadySpan = 0.25;
// A candidate keeps its note while the pitch stays within this distance of it, so a pitch
// sitting on the border between two notes does not restart the confirmation on every frame.
// The note itself starts only on a frame within its own span: an attack that settles off
// pitch (a reed, a voice) may cross the border after its first periods and rest nearer the
// neighbour, and then it is the neighbour that is played. A vibrato swings back within a
// slow swing's time out (below); a confirmed candidate whose pitch stays across the border
// for longer hands its confirmation to the neighbour.
constexpr double kCandidateReach = 0.65;
// A singer's slide holds each note it passes for a few milliseconds; a scoop or a slide that
// arrives slows down as it reaches its note, but passes the notes on its way at full speed. A
// sounding note changes only to a pitch moving slower than this (semitones per second), twice
// the fastest a vibrato of +-50 cents at 6 Hz ever moves, measured between the pitch followed
// over two spans. A step beyond the candidate's reach from one frame to the next is no glide
// but a jump (a new note, the other sound of a mixture), from where both follow afresh.
constexpr double kGlideSpeed = 40.0;
constexpr double kQuickFollowSeconds = 0.0015;
constexpr double kSlowFollowSeconds = 0.0045;
// A singer often begins a note below it and rises into it, slowing as the pitch arrives (a
// scoop); a bowed or blown attack may do the same. Just after a sound has come up from below the
// start level, a pitch in the outer half of a note's span (a quarter semitone or more from its
// centre) may still be on its way to the next note. It has not arrived while it moves on that
// way faster than a held pitch drifts, nor before it has been followed long enough to tell.
// Otherwise the note below starts, and the one sung follows tens of milliseconds later as a
// second note.
constexpr double kScoopZone = 0.25;
constexpr double kScoopSpeed = 5.0;
constexpr double kScoopWatchSeconds = 2.0 * kSlowFollowSeconds;
constexpr double kOnsetSeconds = 0.05;
// A note that has sounded for a while ends when its periodicity breaks down to this fraction
// of what it has been: a new excitation (re-articulation, a new bow or breath, a legato step)
// does not continue the phase of the old waveform. The next note then needs its own
// confirmation, so a repeated pitch is struck again.
constexpr double kBreakRatio = 0.8;
// A new excitation lowers every analysis whose window spans the joint, a period or more of
// them. One irregular cycle of a rough voice (its period a percent or two off the last) lowers
// a single analysis in the middle of a voice's range, whose value stands for two frames: a
// break must outlast it. Low down, where an analysis spans a longer period, it lowers several.
constexpr uint32_t kBreakSamples = 2 * kWFETFrameSamples;
// For a note whose periodicity wanders (an ensemble), the break lies this many mean
// deviations below its typical periodicity, if that is lower.
constexpr double kBreakDeviations = 4.0;
// The note's typical periodicity is a running mean over about 30 ms of frames.
constexpr double kClaritySeconds = 0.03;
// A sounding note changes when the pitch has been this far beyond the half-semitone border
// for as long as a note needs to start; vibrato of +-50 cents around the note stays inside.
constexpr double kChangeMargin = 0.25;
// A low voice is a train of pulses whose pitch shows afresh once a period: a glide reaches the
// estimate in steps, one a period, and the step that lands on a note it passes holds for a
// whole period, longer than a confirmation once the period is. A change whose pitch came to
// the candidate from between the sounding note (beyond its steady span) and the candidate
// waits for a period of the candidate, at most the longest analysis window; a pitch that jumps
// straight from the sounding note to the next is confirmed as always.
constexpr double kLongestPassingSeconds = 2.0 * NoteDecider::kConfirmSeconds;
// Vibrato: while the sounding note's pitch has turned at a peak and at a trough within this
// long (one cycle of the slowest vibrato, and then some), half a cycle of a vibrato apart (3.3
// to 12.5 Hz; an ensemble's voices beat faster), it swings around its mean, followed over
// about half a cycle. A change then needs the pitch the change margin beyond where the swings
// reach from the mean, and a tenth further, since a vibrato may still be growing; never less
// than without vibrato. No vibrato swings two semitones: from there on, and for a leap of more
// than that, a change is judged as always.
constexpr double kVibratoSeconds = 0.3;
constexpr double kShortestHalfCycleSeconds = 0.04;
constexpr double kLongestHalfCycleSeconds = 0.15;
constexpr double kVibratoMeanSeconds = 0.1;
constexpr double kVibratoGrowth = 1.1;
constexpr double kVibratoBeyond = 2.0;
// A sinking tail's pitch wavers a little beyond the swings the watch saw.
constexpr double kTailSlack = 0.1;
// A vibrato's pitch never rests: it slows below this speed (semitones per second) only for a
// few milliseconds at each turn (4-7 ms for +-50 to +-80 cents at 5-6 Hz). A pitch that has
// rested this long sits on a note, a trill's other note or a step's, and a change is judged
// as always.
constexpr double kRestingSpeed = 3.0;
constexpr double kRestingSeconds = 0.012;
// A wide swing that the watch has not yet seen (the first swings of a vibrato that sets in, or
// one that grows wider than the swings seen so far) slowly takes the pitch past the border to
// the neighbouring note, at +-100 cents right into it, and comes back. A step to the neighbour
// lands in it (within a tenth of a semitone) on a move that set off less than half a vibrato
// cycle before (a swing has been moving that way since its opposite turn, more than half a
// cycle back by the time it reaches the neighbour), rests where it lands, or leaves faster
// than any vibrato moves. A pitch that does none of these changes the note only once it has
// stayed out for as long as a wide, slow swing does: +-90 cents at 4 Hz stays beyond the
// change margin for 47 ms.
constexpr double kIntoNote = 0.1;
constexpr double kSwingOutSeconds = 0.05;
// Octave jumps are the typical error of period trackers: they must hold twice as long, once
// the note has settled. Before that, an octave jump is the attack settling: a blown or bowed
// note may sound the octave above or below for its first periods, and the note follows its
// register as soon as it would follow any other change.
constexpr double kOctaveFactor = 2.0;
// A note ends once the level has stayed below the hold level this long. Dropouts of
// periodicity at a sounding level (a consonant, a bow change, the overlap of a released note
// with the next) are bridged for longer, so they do not split a note.
constexpr double kGapSeconds = 0.008;
constexpr double kDropoutSeconds = 0.025;
// After an attack or a break, the note it interrupted may only start again on a clearly
// periodic sound: the overlap of a released note with its successor still shows the old pitch
// for a few periods, and that must not strike the old note once more. An attack with no trace
// of any other pitch left once the old note is cancelled is that note struck again, and starts
// as any note does.
constexpr double kRestrikeClarity = 0.95;
// An attack re-strikes only a note that has sounded this long; 20 notes per second is about
// the fastest anyone re-articulates one pitch.
constexpr double kMinNoteSeconds = 0.05;
// How long a released note is assumed to ring on (a synthesizer's release, a room's
// reverberation) and is cancelled from the input so the next note shows through.
constexpr double kRingSeconds = 0.3;
// The longest a mixture may hide the next note before the input is taken as it is; a leap
// down to exactly 3, 4 ... periods of the sounding note is rare, a mixture's common period
// frequent, so that one is doubted for longer.
constexpr double kHiddenSeconds = 0.03;
constexpr double kSubharmonicSeconds = 0.15;
// The replaced note no longer rings once the input is this clearly the new note: this
// periodic, and within a quarter tone of its pitch (the blend of two notes a tone apart lies
// a semitone from each).
constexpr double kClearlyNew = 0.95;
constexpr double kClearlyNewSpan = 0.5;
// A released note only fades: with the sounding note cancelled, the pitch of the note before
// is that one's tail until what is left has grown this much (6 dB) above the lowest of its
// envelope since (below), and after a release, what the input shows within the released
// note's swings is its tail until the input has grown as much. The beating of a tail with the
// next note, and the pitch a vibrato that goes on swinging leaves after the cancelling, must
// not bring it back.
constexpr double kRegrowth = 4.0;
// Two notes a semitone or a tone apart beat in what is left with the newer one cancelled, its
// power swinging by 10-15 dB within a beat (16 beats a second and more for a semitone from
// middle C up). The tail's level is the envelope of those swings, which sinks at most this
// fast (dB per second): about 6 dB from one beat to the next, so a beat never reads as the
// tail growing again, while the note before struck anew comes back well over it.
constexpr double kTailFallDbPerSecond = 100.0;
// Pitches closer than this (semitones) belong to the same note.
constexpr double kSameNote = 0.75;
// A note that is less than perfectly periodic is an ensemble (voices beating against each
// other), a breathy or noisy source: its level swells and sinks by several decibels without
// any attack or release. The level events need that much more: 4 dB at a periodicity of 0.9.
constexpr double kUnclearMarginDb = 40.0;
// The start level keeps quiet sounds (bleed, a neighbour's instrument, the room) from starting
// notes beside a performance. Quiet only means something next to the performance's own level:
// a sound this far (20 dB) below the loudest clearly periodic sound heard lately is quiet. A
// performance that is quiet as a whole (a distant microphone, a low input gain) starts notes
// as early in their swell as a loud one does while it shows itself a little (3 dB) above the
// hold level, at least every couple of seconds; otherwise that is the floor of every start,
// so a quiet background, which never reaches it, starts nothing, also once the performance
// has stopped.
constexpr double kQuietRatio = 0.1;
const double kStartAboveHold = std::sqrt(2.0);
constexpr double kPerformingSeconds = 2.0;
// Once started, a note of a quiet performance keeps sounding while it stays that far above the
// performance's quiet level (3 dB under it), whatever the hold level says: its soft passages
// are as soft as everyone's, only further down. The hold level gives way by up to 20 dB.
constexpr double kHoldGiveWay = 0.1;
// How fast the memory of a loud passage fades, so a quiet passage long after it is heard again.
constexpr double kLoudestFallDbPerSecond = 3.0;
// A blown note may sound its second harmonic alone for its first periods (a recorder's attack),
// and started then it would be a short note an octave up. While the input shows a fundamental
// building up under the candidate (OctaveBelow.h), its start waits for this long at most; once
// the fundamental dominates, the estimate falls to it and that note is the candidate.
constexpr double kFundamentalWaitSeconds = 0.02;

double PitchOf(double frequency, double refPitch)
{
    return 69.0 + 12.0 * std::log2(frequency / refPitch);
}

double FrequencyOf(int note, double refPitch)
{
    return refPitch * std::exp2((note - 69) / 12.0);
}

MixtureView MixtureOf(const FrameFeatures& f)
{
    return {f.frequency, f.clarity, f.residualFrequency, f.residualClarity, f.residualShare};
}

int Nearest(double pitch) { return static_cast<int>(std::floor(pitch + 0.5)); }

bool SameNote(double a, double b) { return std::abs(12.0 * std::log2(a / b)) < kSameNote; }

// Whether a sound at `other` repeats at twice the period of `frequency` but not at its period:
// that frequency's octave below, or an odd harmonic of it.
bool RepeatsOnlyAtTwice(double other, double frequency)
{
    const auto harmonicOf = [other](double f) { return SameNote(other, f) || WholeRatio(other / f); };
    return other > 0.0 && harmonicOf(frequency / 2.0) && !harmonicOf(frequency);
}

uint32_t Samples(double seconds, double rate) { return static_cast<uint32_t>(seconds * rate); }

// The floor of every start, and what a performance must reach to lower it.
double StartFloor(const PreciseSettings& s) { return s.holdLevel * kStartAboveHold; }

// How far a value followed over `seconds` moves towards a frame of `samples`.
double FollowWeight(uint32_t samples, double seconds, double rate) { return std::min(1.0, samples / (seconds * rate)); }

int LevelValue(const PreciseSettings& s, double level)
{
    if (level <= 1e-20) {
        return 0;
    }
    const double db = 20.0 * std::log10(level / 32768.0);
    const double value = 127.0 * (1.0 - (s.levelCeilDb - db) / (s.levelCeilDb - s.levelFloorDb));
    return std::clamp(static_cast<int>(std::clamp(value, -1.0, 128.0)), 0, 127);
}

} // namespace

void NoteDecider::Decide(const PreciseSettings& s, const FrameFeatures& frame, WFETMidiOut* out) noexcept
{
    out->noteOff = -1;
    out->noteOn = -1;
    const MixtureView view = MixtureOf(frame);
    // Once what is left grows again, the note before has been struck anew (a neighbour note
    // and back): neither its last pitch nor its note number is a tail any longer.
    const bool regrows = TailRegrows(frame);
    const double previous = regrows ? 0.0 : previousFrequency_;
    const double previousNote = regrows ? 0.0 : previousNominal_;
    const MixtureView chosen = ChooseSource(view, ringingFrequency_, previous, previousNote);
    FrameFeatures f = frame;
    f.frequency = chosen.frequency;
    f.clarity = chosen.clarity;
    f.fromResidual = chosen.frequency != frame.frequency;
    const double pitch = f.frequency > 0.0 ? PitchOf(f.frequency, s.refPitch) : 0.0;
    FollowPitch(s, pitch, f.samples);
    FollowRun(pitch);
    const uint32_t onsetSamples = Samples(kOnsetSeconds, s.sampleRate);
    sinceOnset_ = f.level <= StartLevel(s) ? 0 : std::min(sinceOnset_ + f.samples, onsetSamples);
    clock_ += f.samples;
    FollowMove(s, pitch, f.samples);
    // The note's own frames only: the input with a note cancelled, or blended with the note
    // this one replaced, swings for other reasons.
    if (sounding_ && pitch > 0.0 && !f.fromResidual && replacedFrequency_ <= 0.0) {
        const double meanWeight = FollowWeight(f.samples, kVibratoMeanSeconds, s.sampleRate);
        vibrato_.Follow(slowPitch_, clock_, Samples(kSlowFollowSeconds, s.sampleRate), meanWeight,
                        std::abs(slowPitch_ - note_) <= 0.5, Glides());
    }
    if (sounding_) {
        // While a mixture hides what comes next, a frame says nothing about it; but a mixture
        // that lasts is what the input is, and the own estimate counts again.
        const Hidden hidden = f.fromResidual ? Hidden::No
                                             : HiddenByMixture(view, soundingFrequency_, replacedFrequency_,
                                                               ringingFrequency_);
        hiddenSamples_ = hidden != Hidden::No ? hiddenSamples_ + f.samples : 0;
        const double patience = hidden == Hidden::BySubharmonic ? kSubharmonicSeconds : kHiddenSeconds;
        if (hidden != Hidden::No && hiddenSamples_ < Samples(patience, s.sampleRate)) {
            noteSamples_ += f.samples;
        } else {
            DecideSounding(s, f, pitch, out);
        }
    } else {
        DecideIdle(s, f, pitch, out);
    }
    FollowRinging(s, frame);
    FollowLoudest(s, frame);
    out->bend = std::clamp<int16_t>(out->bend, 0, 16383);
    out->expression = std::clamp<int16_t>(out->expression, 0, 127);
    out->velocity = std::clamp<int16_t>(out->velocity, 0, 127);
}

void NoteDecider::DecideIdle(const PreciseSettings& s, const FrameFeatures& f, double pitch,
                             WFETMidiOut* out) noexcept
{
    releaseFloor_ = std::min(releaseFloor_, f.power);
    const int nearest = Nearest(pitch);
    // What rings on after a release is that note's tail, not a new note.
    if (f.attack) {
        releasedNote_ = -1;
        attackSinceEnd_ = true;
    }
    if (nearest == releasedNote_) {
        return;
    }
    // A residual has passed its own tests (MixtureChoice.h).
    const double clarity = f.fromResidual              ? 0.0
                           : nearest == interruptedNote_ ? RestrikeClarity(f)
                                                         : kStartClarity;
    const bool justBegun = sinceOnset_ < Samples(kOnsetSeconds, s.sampleRate);
    const bool voiced = f.frequency > 0.0 && f.clarity >= clarity && f.level > StartLevel(s) &&
                        !f.leftOver && !(justBegun && Arriving(s, pitch - nearest));
    if (!voiced) {
        // An attack is noisy: a few unclear frames pause the confirmation, more restart it.
        candidateMisses_ += f.samples;
        if (candidateMisses_ > Samples(kConfirmSeconds, s.sampleRate)) {
            ClearCandidate();
        }
        return;
    }
    TrackCandidate(s, nearest, pitch, f.samples);
    // A note that broke off in a room rings on at its own pitch, sinking; struck again, it
    // comes back to near its level, or with an attack. Until then it keeps its confirmation,
    // so that it starts on the frame it is back.
    const bool ownTail = candidate_ == interruptedNote_ && !f.fromResidual && f.faded && !attackSinceEnd_;
    // A released note's tail keeps its vibrato, which carries it into a neighbour's span; in a
    // room its fundamental may sink under a partial that the analysis then takes for the pitch
    // (a clarinet's twelfth). While the sound stays well under its level and no attack has come,
    // the input itself showing a neighbour or a harmonic of that note is still its tail; a new
    // note shows with the old one cancelled.
    const int fromReleased = candidate_ - releasedNote_;
    const bool releasedTail = releasedNote_ >= 0 && !f.fromResidual && f.faded &&
                              (std::abs(fromReleased) == 1 || WholeRatio(std::exp2(fromReleased / 12.0)));
    const bool confirmed = candidateSamples_ >= Samples(kConfirmSeconds, s.sampleRate);
    if (confirmed && nearest == candidate_ && !ownTail && !releasedTail && !InSwingingTail(s, f) &&
        !AwaitsFundamental(s, f)) {
        StartNote(s, f, candidate_, out);
        WriteBendAndExpression(s, f, pitch, out);
    }
}

bool NoteDecider::AwaitsFundamental(const PreciseSettings& s, const FrameFeatures& f) noexcept
{
    // A frame that cannot tell keeps a wait that has begun. A note still ringing an octave
    // under the candidate, or at an odd harmonic of that octave, repeats at twice its period
    // too: then there is nothing to wait for.
    const bool building = f.octaveBelow == OctaveBelow::Building ||
                          (f.octaveBelow == OctaveBelow::Unknown && awaitedSamples_ > 0);
    if (!building || awaitedSamples_ >= Samples(kFundamentalWaitSeconds, s.sampleRate) ||
        RepeatsOnlyAtTwice(ringingFrequency_, FrequencyOf(candidate_, s.refPitch))) {
        return false;
    }
    awaitedSamples_ += f.samples;
    return true;
}

void NoteDecider::DecideSounding(const PreciseSettings& s, const FrameFeatures& f, double pitch,
                                 WFETMidiOut* out) noexcept
{
    noteSamples_ += f.samples;
    // An attack or a break seen during a short dropout still counts once the sound is back.
    const bool settled = noteSamples_ >= Samples(kMinNoteSeconds, s.sampleRate);
    // The periodicity of a residual is not comparable with that of the whole input. Nor does a
    // dip break the note while the note it replaced still dominates the input: the two beat,
    // and the periodicity of their mixture sinks and recovers with no new excitation.
    const double breakAt = std::min(kBreakRatio * noteClarity_, noteClarity_ - kBreakDeviations * clarityDeviation_);
    const bool below = !f.fromResidual && replacedFrequency_ <= 0.0 && f.clarity < breakAt;
    belowBreakSamples_ = below ? belowBreakSamples_ + f.samples : 0;
    const bool broken = belowBreakSamples_ > kBreakSamples;
    if (settled && (f.attack || broken)) {
        interrupted_ = true;
    }
    if (settled && f.release) {
        const int released = note_;
        EndNote(out, KeepCandidate::Yes);
        releasedNote_ = released;
        releaseFloor_ = f.power;
        return;
    }
    const double hold = HoldLevel(s);
    const bool voiced = f.frequency > 0.0 && f.clarity >= kHoldClarity && f.level > hold;
    if (!voiced) {
        gapSamples_ += f.samples;
        const double tolerance = f.level > hold ? kDropoutSeconds : kGapSeconds;
        if (gapSamples_ >= Samples(tolerance, s.sampleRate)) {
            EndNote(out);
        }
        return;
    }
    gapSamples_ = 0;
    if (interrupted_) {
        // The new attack gets its own confirmation, like any note from silence, with what the
        // next note has built up of it already.
        const int interrupted = note_;
        EndNote(out, KeepCandidate::Yes);
        interruptedNote_ = interrupted;
        DecideIdle(s, f, pitch, out);
        return;
    }
    const double weight = FollowWeight(f.samples, kClaritySeconds, s.sampleRate);
    if (!f.fromResidual) {
        noteClarity_ += weight * (f.clarity - noteClarity_);
        clarityDeviation_ += weight * (std::abs(f.clarity - noteClarity_) - clarityDeviation_);
    }
    // How the pitch left the middle of the note: a vibrato swings out slowly; a step glides or
    // jumps (the pitch followers start afresh), maybe into the outer part of the old note's
    // span first, where the vibrato it goes on with carries it on.
    if (std::abs(pitch - note_) <= kSteadySpan) {
        leftQuickly_ = false;
    } else if (Glides() || followedSamples_ == 0) {
        leftQuickly_ = true;
    }
    if (Departs(s, pitch)) {
        const int nearest = Nearest(pitch);
        TrackCandidate(s, nearest, pitch, f.samples);
        const bool back = SwingsBackAcrossStep();
        const bool confirmed = candidateSamples_ >= ChangeSamples(s, pitch, settled || back);
        if (confirmed && nearest == candidate_ && !Glides()) {
            out->noteOff = static_cast<int16_t>(note_);
            StartNote(s, f, candidate_, out);
        }
    } else {
        // Only a frame that belongs to the note moves its pitch (the bend, the continuity of
        // the analysis, the period to cancel).
        soundingFrequency_ = f.frequency;
        ClearCandidate();
    }
    WriteBendAndExpression(s, f, pitch, out);
}

double NoteDecider::RestrikeClarity(const FrameFeatures& f) const noexcept
{
    const bool restruck = attackSinceEnd_ && !ResidualHoldsAnother(MixtureOf(f));
    return restruck ? kStartClarity : kRestrikeClarity;
}

double NoteDecider::StartLevel(const PreciseSettings& s) const noexcept
{
    const bool performing = sinceAboveFloor_ < Samples(kPerformingSeconds, s.sampleRate);
    const double floor = performing ? 0.0 : StartFloor(s);
    return std::min(s.startLevel, std::max(floor, kQuietRatio * loudest_));
}

double NoteDecider::HoldLevel(const PreciseSettings& s) const noexcept
{
    return std::min(s.holdLevel, std::max(s.holdLevel * kHoldGiveWay, kQuietRatio * loudest_ / kStartAboveHold));
}

void NoteDecider::FollowLoudest(const PreciseSettings& s, const FrameFeatures& frame) noexcept
{
    const double fall = std::pow(10.0, -kLoudestFallDbPerSecond * frame.samples / s.sampleRate / 20.0);
    const bool periodic = frame.frequency > 0.0 && frame.clarity >= kStartClarity;
    loudest_ = std::max(periodic ? frame.level : 0.0, loudest_ * fall);
    const bool aboveFloor = periodic && frame.level > StartFloor(s);
    const uint32_t window = Samples(kPerformingSeconds, s.sampleRate);
    sinceAboveFloor_ = aboveFloor ? 0 : std::min(sinceAboveFloor_, window) + frame.samples;
}

double NoteDecider::LevelMarginDb() const noexcept
{
    // The last note's character holds while it may still ring.
    return ringingFrequency_ > 0.0 ? kUnclearMarginDb * std::max(0.0, 1.0 - noteClarity_) : 0.0;
}

bool NoteDecider::TailRegrows(const FrameFeatures& f) const noexcept
{
    return f.residualPower >= kRegrowth * tailFloor_;
}

void NoteDecider::FollowRinging(const PreciseSettings& s, const FrameFeatures& frame) noexcept
{
    // The analysis cancels the note that dominates the input: the replaced note while it still
    // does, then the sounding one; after a note ends, that note while its release may ring.
    ringSamples_ += frame.samples;
    const bool ringing = ringSamples_ < Samples(kRingSeconds, s.sampleRate);
    if (sounding_) {
        const bool ownIsNew = frame.frequency > 0.0 && frame.clarity >= kClearlyNew &&
                              std::abs(12.0 * std::log2(frame.frequency / soundingFrequency_)) < kClearlyNewSpan;
        if (replacedFrequency_ > 0.0 && (ownIsNew || !ringing)) {
            replacedFrequency_ = 0.0;
        }
        ringingFrequency_ = replacedFrequency_ > 0.0 ? replacedFrequency_ : soundingFrequency_;
    } else if (!ringing) {
        ringingFrequency_ = 0.0;
    }
    if (!ringing) {
        previousFrequency_ = previousNominal_ = 0.0;
        releasedNote_ = -1;
    }
    const bool sameCancelled =
        ringingFrequency_ > 0.0 && tailFrequency_ > 0.0 && SameNote(ringingFrequency_, tailFrequency_);
    // On the frame the cancelled note changes, what is left was computed for the note before:
    // the tail's level is known from the next frame on.
    if (sameCancelled) {
        const double seconds = frame.samples / s.sampleRate;
        tailPeak_ = SinkingPeak(tailPeak_, frame.residualPower, kTailFallDbPerSecond, seconds);
        tailFloor_ = std::min(tailFloor_, tailPeak_);
    } else {
        tailPeak_ = 0.0;
        tailFloor_ = std::numeric_limits<double>::infinity();
    }
    tailFrequency_ = ringingFrequency_;
}

void NoteDecider::ClearCandidate() noexcept
{
    candidate_ = rival_ = -1;
    candidateSamples_ = candidateMisses_ = rivalSamples_ = acrossSamples_ = awaitedSamples_ = 0;
}

void NoteDecider::TrackCandidate(const PreciseSettings& s, int nearest, double pitch,
                                 uint32_t samples) noexcept
{
    const uint32_t patience = Samples(kConfirmSeconds, s.sampleRate);
    const bool across = nearest != candidate_ && candidateSamples_ >= patience;
    acrossSamples_ = across ? acrossSamples_ + samples : 0;
    const bool stayedAcross = acrossSamples_ >= Samples(kSwingOutSeconds, s.sampleRate);
    const double span = std::max(candidateHigh_, pitch) - std::min(candidateLow_, pitch);
    if (ShowsCandidate(pitch) && span <= kSteadySpan && !stayedAcross) {
        candidateSamples_ += samples;
        candidateMisses_ = 0;
        candidateLow_ = std::min(candidateLow_, pitch);
        candidateHigh_ = std::max(candidateHigh_, pitch);
        return;
    }
    // A stray frame (a formant taken for the period, a burst of noise) only pauses the
    // candidate; a rival pitch replaces it once it has been seen for longer, or once the
    // candidate has been missing for longer than the patience.
    rivalSamples_ = stayedAcross       ? acrossSamples_
                    : nearest == rival_ ? rivalSamples_ + samples
                                        : samples;
    rival_ = nearest;
    candidateMisses_ += samples;
    if (candidate_ >= 0 && candidateMisses_ <= patience && rivalSamples_ <= candidateSamples_) {
        return;
    }
    candidate_ = nearest;
    candidateSamples_ = rivalSamples_;
    candidateMisses_ = awaitedSamples_ = 0;
    candidateLow_ = candidateHigh_ = pitch;
    rival_ = -1;
    rivalSamples_ = 0;
}

bool NoteDecider::ShowsCandidate(double pitch) const noexcept
{
    return candidate_ >= 0 && std::abs(pitch - candidate_) <= kCandidateReach;
}

void NoteDecider::FollowPitch(const PreciseSettings& s, double pitch, uint32_t samples) noexcept
{
    const bool hadPitch = std::exchange(hadPitch_, pitch > 0.0);
    if (pitch <= 0.0) {
        beforeJump_.reset();
        return;
    }
    if (beforeJump_) {
        sinceJump_ += samples;
        if (sinceJump_ > Samples(kConfirmSeconds, s.sampleRate)) {
            beforeJump_.reset();
        }
    }
    if (std::abs(pitch - quickPitch_) > kCandidateReach) {
        if (beforeJump_ && std::abs(pitch - beforeJump_->quickPitch) <= kCandidateReach) {
            quickPitch_ = beforeJump_->quickPitch;
            slowPitch_ = beforeJump_->slowPitch;
            followedSamples_ = beforeJump_->samples;
            leftQuickly_ = beforeJump_->leftQuickly;
            beforeJump_.reset();
        } else {
            if (!beforeJump_ && hadPitch) {
                beforeJump_ = Followed{quickPitch_, slowPitch_, followedSamples_, leftQuickly_};
                sinceJump_ = 0;
            }
            quickPitch_ = slowPitch_ = pitch;
            followedSamples_ = 0;
            return;
        }
    }
    followedSamples_ = std::min(followedSamples_ + samples, Samples(kScoopWatchSeconds, s.sampleRate));
    quickPitch_ += FollowWeight(samples, kQuickFollowSeconds, s.sampleRate) * (pitch - quickPitch_);
    slowPitch_ += FollowWeight(samples, kSlowFollowSeconds, s.sampleRate) * (pitch - slowPitch_);
}

void NoteDecider::FollowRun(double pitch) noexcept
{
    const int nearest = pitch > 0.0 ? Nearest(pitch) : -1;
    if (nearest != runNote_) {
        runNote_ = nearest;
        const double from = lastPitch_ - note_;
        runGlidedIn_ = sounding_ && nearest >= 0 && lastPitch_ > 0.0 && from * (nearest - note_) > 0.0 &&
                       std::abs(from) >= kSteadySpan && (nearest - lastPitch_) * (nearest - note_) > 0.0;
    }
    lastPitch_ = pitch;
}

void NoteDecider::FollowMove(const PreciseSettings& s, double pitch, uint32_t samples) noexcept
{
    const double speed = PitchSpeed();
    const bool moving = pitch > 0.0 && std::abs(speed) >= kRestingSpeed;
    const bool still = pitch > 0.0 && !moving;
    restingSamples_ = still ? std::min(restingSamples_ + samples, Samples(kRestingSeconds, s.sampleRate)) : 0;
    const int direction = moving ? (speed > 0.0 ? 1 : -1) : 0;
    if (direction == 0 || direction != moveDirection_) {
        moveStart_ = clock_;
    }
    moveDirection_ = direction;
    // A pitch that wavers across the edge of a note's middle at a turn arrives on no move.
    const bool intoNote = pitch > 0.0 && std::abs(pitch - Nearest(pitch)) <= kIntoNote;
    if (intoNote && !intoNote_) {
        arrivalMove_ = direction != 0 ? clock_ - moveStart_ : std::numeric_limits<uint64_t>::max();
    }
    intoNote_ = intoNote;
}

double NoteDecider::PitchSpeed() const noexcept
{
    return (quickPitch_ - slowPitch_) / (kSlowFollowSeconds - kQuickFollowSeconds);
}

bool NoteDecider::Glides() const noexcept { return std::abs(PitchSpeed()) > kGlideSpeed; }

bool NoteDecider::Swinging(const PreciseSettings& s) const noexcept
{
    return vibrato_.Swings(clock_, Samples(kVibratoSeconds, s.sampleRate),
                           Samples(kShortestHalfCycleSeconds, s.sampleRate),
                           Samples(kLongestHalfCycleSeconds, s.sampleRate));
}

bool NoteDecider::InSwingingTail(const PreciseSettings& s, const FrameFeatures& f) const noexcept
{
    // Nor does the vibrato stop when the voice does: whatever the analysis makes of the dying
    // tail, with the note cancelled or not, lies within its swings until a new sound grows.
    if (releasedNote_ < 0 || f.power >= kRegrowth * releaseFloor_ || !Swinging(s)) {
        return false;
    }
    const double tailReach = kVibratoGrowth * vibrato_.Reach() + kTailSlack;
    return std::abs(candidate_ - vibrato_.Mean()) - 0.5 <= tailReach;
}

bool NoteDecider::SwingsBackAcrossStep() const noexcept
{
    // Straight after a legato step, a pitch back at the note the step left is a vibrato
    // swinging back across the step, not the new note's attack settling. So is a pitch back at
    // a note between the two, within a vibrato's reach, once the step has landed in the middle
    // of its note; a step that reached its note only at the top of a swing may have overshot,
    // and the swing back corrects it.
    if (stepFrom_ < 0) {
        return false;
    }
    const double reach = std::min<double>(std::abs(stepFrom_ - note_), kVibratoBeyond);
    const bool between = stepLanded_ && (candidate_ - note_) * (stepFrom_ - note_) > 0 &&
                         std::abs(candidate_ - note_) < reach;
    return candidate_ == stepFrom_ || between;
}

bool NoteDecider::Resting(const PreciseSettings& s) const noexcept
{
    return restingSamples_ >= Samples(kRestingSeconds, s.sampleRate);
}

uint32_t NoteDecider::ChangeSamples(const PreciseSettings& s, double pitch, bool settled) const noexcept
{
    uint32_t confirm = Samples(kConfirmSeconds, s.sampleRate);
    if (runNote_ == candidate_ && runGlidedIn_) {
        const double period = 1.0 / FrequencyOf(candidate_, s.refPitch);
        confirm = std::max(confirm, Samples(std::min(period, kLongestPassingSeconds), s.sampleRate));
    }
    if (settled && std::abs(std::abs(candidate_ - note_) - 12) <= 1) {
        return static_cast<uint32_t>(kOctaveFactor * confirm);
    }
    // A note just begun may still be settling into its pitch and follows at once, unless a
    // swing across a border brought it: the next swing crosses the border back within half a
    // vibrato cycle, before the note would have settled.
    if (!settled && (stepFrom_ < 0 || std::abs(stepFrom_ - note_) != 1)) {
        return confirm;
    }
    const bool landed = std::abs(pitch - candidate_) <= kIntoNote &&
                        arrivalMove_ < Samples(kShortestHalfCycleSeconds, s.sampleRate);
    const bool maySwingBack = std::abs(candidate_ - note_) == 1 && !landed &&
                              !Resting(s) && !leftQuickly_;
    return maySwingBack ? Samples(kSwingOutSeconds, s.sampleRate) : confirm;
}

bool NoteDecider::Departs(const PreciseSettings& s, double pitch) const noexcept
{
    // Within the note's own span nothing departs, and most frames end here.
    const double fromNote = std::abs(pitch - note_);
    if (fromNote <= 0.5) {
        return false;
    }
    const double fromMean = std::abs(pitch - vibrato_.Mean());
    if (Resting(s) || fromMean >= kVibratoBeyond || !Swinging(s)) {
        return fromNote > 0.5 + kChangeMargin;
    }
    // Back at the note the voice swings around, after a swing that went on to the next note
    // before the watch knew it for a swing.
    if (fromNote > 0.5 + kChangeMargin && Nearest(vibrato_.Mean()) != note_ && fromMean <= 0.5) {
        return true;
    }
    const double beyondSwings = kVibratoGrowth * vibrato_.Reach() + kChangeMargin;
    return fromMean > std::max(0.5 + kChangeMargin, beyondSwings);
}

bool NoteDecider::Arriving(const PreciseSettings& s, double offset) const noexcept
{
    if (std::abs(offset) < kScoopZone) {
        return false;
    }
    const double speed = PitchSpeed();
    return followedSamples_ < Samples(kScoopWatchSeconds, s.sampleRate) ||
           (speed * offset > 0.0 && std::abs(speed) > kScoopSpeed);
}

void NoteDecider::StartNote(const PreciseSettings& s, const FrameFeatures& f, int note, WFETMidiOut* out) noexcept
{
    // A voice that steps beyond its swings swings on around the new note. A swing's excursion,
    // and the return from one, keep the watch as it is.
    if (sounding_ && Swinging(s) && note != Nearest(vibrato_.Mean())) {
        vibrato_.Move(note - note_);
    } else if (!sounding_ || std::abs(note - note_) > kVibratoBeyond) {
        vibrato_.Reset();
    }
    // A note started while another still rings replaces it; that one is cancelled until the
    // new note dominates. A legato change to another note always does, however close vibrato,
    // a scoop or the blend of the two has pulled the old note's last pitch to the new one.
    const bool ringing = ringingFrequency_ > 0.0;
    const bool changed = sounding_ && note != note_;
    const bool apart =
        ringing && std::abs(12.0 * std::log2(f.frequency / ringingFrequency_)) >= kSameNote;
    replacedFrequency_ = ringing && (changed || apart) ? ringingFrequency_ : 0.0;
    previousFrequency_ = replacedFrequency_;
    // Vibrato, a scoop or the blend with this note may have pulled that one's last pitch
    // halfway to a neighbour; its own note tells what its tail will sound like.
    previousNominal_ = replacedFrequency_ > 0.0 ? FrequencyOf(note_, s.refPitch) : 0.0;
    stepFrom_ = sounding_ ? note_ : -1;
    stepLanded_ = sounding_ && std::abs(PitchOf(f.frequency, s.refPitch) - note) <= kIntoNote;
    ringSamples_ = 0;
    tailFrequency_ = 0.0; // what is left with the new note cancelled is followed afresh
    interruptedNote_ = -1;
    releasedNote_ = -1;
    sounding_ = true;
    note_ = note;
    noteSamples_ = 0;
    gapSamples_ = 0;
    interrupted_ = false;
    leftQuickly_ = false;
    ClearCandidate();
    soundingFrequency_ = f.frequency;
    noteClarity_ = f.fromResidual ? kStartClarity : f.clarity;
    clarityDeviation_ = 0.0;
    out->noteOn = static_cast<int16_t>(note);
    // A quiet performance starts notes below the floor of the level scale; velocity 0 would
    // make their note-on a note-off.
    const int level = std::max(1, LevelValue(s, f.level));
    switch (s.levelMode) {
    case WFET_LEVEL_VELOCITY:
        out->velocity = static_cast<int16_t>(level);
        break;
    case WFET_LEVEL_RELATIVE:
        out->velocity = static_cast<int16_t>(level);
        break;
    case WFET_LEVEL_EXPRESSION:
        out->velocity = 127;
        break;
    default:
        break;
    }
    noteVelocity_ = out->velocity;
}

void NoteDecider::EndNote(WFETMidiOut* out, KeepCandidate keep) noexcept
{
    ringingFrequency_ = replacedFrequency_ > 0.0 ? replacedFrequency_ : soundingFrequency_;
    replacedFrequency_ = 0.0;
    ringSamples_ = 0;
    out->noteOff = static_cast<int16_t>(note_);
    sounding_ = false;
    attackSinceEnd_ = false;
    interrupted_ = false;
    gapSamples_ = 0;
    // A note that ends because the next one breaks in or is released into it hands on the
    // confirmation that next note has already built up while it sounded.
    if (keep == KeepCandidate::No || candidate_ == note_) {
        ClearCandidate();
    }
}

void NoteDecider::WriteBendAndExpression(const PreciseSettings& s, const FrameFeatures& f, double pitch,
                                         WFETMidiOut* out) noexcept
{
    const double deviation = std::clamp(pitch - note_, -double(s.bendRange), double(s.bendRange));
    out->bend = static_cast<int16_t>(deviation * 8191.0 / s.bendRange + 8192.0);
    const int level = LevelValue(s, f.level);
    const bool starting = out->noteOn >= 0;
    switch (s.levelMode) {
    case WFET_LEVEL_VELOCITY:
        out->velocity = static_cast<int16_t>(noteVelocity_);
        out->expression = 127;
        break;
    case WFET_LEVEL_RELATIVE:
        out->velocity = static_cast<int16_t>(noteVelocity_);
        out->expression = starting ? 96 : static_cast<int16_t>(noteVelocity_ <= 10 ? 127 : level * 96 / noteVelocity_);
        break;
    case WFET_LEVEL_EXPRESSION:
        out->velocity = static_cast<int16_t>(noteVelocity_);
        out->expression = static_cast<int16_t>(level);
        break;
    default:
        break;
    }
}

} // namespace vocato::precise
