// The precise tracker's note decision: turns each frame's pitch, periodicity, level and attack
// flag into note-off, note-on with velocity, bend and expression.
//
// Hysteresis everywhere a wrong decision is costly: a note starts only when the input is
// clearly periodic, loud enough and has kept the same nearest note for a short confirmation
// time; it continues while the periodicity and level stay above lower thresholds; it changes
// only when the pitch has left the sounding note by more than half a semitone plus a margin
// (while it swings like a vibrato, beyond where the swings reach, VibratoWatch.h) for a
// confirmation time (longer for an octave, the typical tracking error); it ends after a
// short unvoiced gap, not on one bad frame, or on a release; and a new attack or a break in
// the periodicity re-strikes it. While a released note rings on into the next one, the
// decision follows the analysis of the input with that note cancelled (MixtureChoice.h).
//
// Thread contract: audio thread only; never allocates.
#pragma once

#include "OctaveBelow.h"
#include "PreciseSettings.h"
#include "VibratoWatch.h"
#include "WFET.h"

#include <cstdint>
#include <limits>
#include <optional>

namespace vocato::precise {

struct FrameFeatures {
    double frequency = 0.0; // Hz, 0 = none
    double clarity = 0.0;
    double residualFrequency = 0.0; // with the ringing note cancelled, see MixtureChoice.h
    double residualClarity = 0.0;
    double residualShare = 0.0;
    double residualPower = 0.0; // 16-bit scale
    bool fromResidual = false; // set by the decision when it follows the residual
    double level = 0.0;     // peak envelope, 16-bit scale
    bool attack = false;
    bool release = false;
    bool faded = false;
    bool leftOver = false;
    OctaveBelow octaveBelow = OctaveBelow::Unknown; // under the input's own estimate
    double power = 0.0;     // of the latest period, 16-bit scale squared
    uint32_t samples = 0;   // samples this frame covers
};

class NoteDecider {
public:
    // A note starts once the same nearest note has held steadily this long, half the longest
    // analysis window (PeriodicityAnalyzer.h), so an attack's first unsettled periods do not
    // start a wrong note.
    static constexpr double kConfirmSeconds = 0.006;

    void Decide(const PreciseSettings& settings, const FrameFeatures& frame, WFETMidiOut* out) noexcept;

    // The sounding note's current fine pitch in Hz, 0 when idle; the analysis keeps to it.
    double SoundingFrequency() const noexcept { return sounding_ ? soundingFrequency_ : 0.0; }
    // The note that still rings (sounding, or released a moment ago), for the analysis to
    // cancel; 0 when none.
    double RingingFrequency() const noexcept { return ringingFrequency_; }
    // How much more (dB) than a steady solo note the level of the sounding note must rise for
    // an attack or fall for a release.
    double LevelMarginDb() const noexcept;

private:
    void DecideIdle(const PreciseSettings& s, const FrameFeatures& f, double pitch, WFETMidiOut* out) noexcept;
    void DecideSounding(const PreciseSettings& s, const FrameFeatures& f, double pitch, WFETMidiOut* out) noexcept;
    void FollowRinging(const PreciseSettings& s, const FrameFeatures& frame) noexcept;
    // The periodicity the note an attack or a break interrupted needs to start again.
    double RestrikeClarity(const FrameFeatures& f) const noexcept;
    // The level a note must exceed to start: the start level, or less in a quiet performance.
    double StartLevel(const PreciseSettings& s) const noexcept;
    // The level a sounding note must stay above: the hold level, or less in a quiet performance.
    double HoldLevel(const PreciseSettings& s) const noexcept;
    void FollowLoudest(const PreciseSettings& s, const FrameFeatures& frame) noexcept;
    void ClearCandidate() noexcept;
    // Whether what is left with the ringing note cancelled grows again: the note before that
    // one struck anew, not its fading tail.
    bool TailRegrows(const FrameFeatures& f) const noexcept;
    void TrackCandidate(const PreciseSettings& s, int nearest, double pitch,
                        uint32_t samples) noexcept;
    // Whether a frame at `pitch` counts for the candidate. A frame of a rival only pauses the
    // candidate: the input already shows something else there (a glide arriving beyond the
    // note on its way, the next note rising under a ringing tail).
    bool ShowsCandidate(double pitch) const noexcept;
    // The pitch, followed quickly and slowly; the two part while it glides. A jump beyond the
    // candidate's reach starts both afresh; a jump back to where they were, before a new note
    // could have been confirmed, was a stray (a partial of a sound ringing in the room, for an
    // analysis or two), and they go on as if the pitch had never left.
    void FollowPitch(const PreciseSettings& s, double pitch, uint32_t samples) noexcept;
    // How fast the pitch moves (semitones per second, signed): a steady glide keeps the two
    // followers its speed times the difference of their spans apart.
    double PitchSpeed() const noexcept;
    // Whether the pitch rests or which way it moves, since when, and how long it had moved that
    // way when it arrived in the note it is in.
    void FollowMove(const PreciseSettings& s, double pitch, uint32_t samples) noexcept;
    bool Glides() const noexcept;
    // Whether the sounding note's pitch swings like a vibrato (VibratoWatch.h).
    bool Swinging(const PreciseSettings& s) const noexcept;
    // Whether the candidate lies within the swings of a released note whose tail has not grown
    // again since the release.
    bool InSwingingTail(const PreciseSettings& s, const FrameFeatures& f) const noexcept;
    // Whether the confirmed candidate's start waits for a fundamental building up under it;
    // counts the wait.
    bool AwaitsFundamental(const PreciseSettings& s, const FrameFeatures& f) noexcept;
    // Whether the pitch has hardly moved for a while: it sits on a note, no vibrato's swing.
    bool Resting(const PreciseSettings& s) const noexcept;
    // Whether the candidate, straight after a legato step, is the pitch swinging back across
    // that step: it then changes the note only as it would change a settled one.
    bool SwingsBackAcrossStep() const noexcept;
    // Whether `pitch` has left the sounding note for another one.
    bool Departs(const PreciseSettings& s, double pitch) const noexcept;
    // Starts a new run of frames whenever the nearest note changes.
    void FollowRun(double pitch) noexcept;
    // How long a departure to the candidate must hold before the note changes.
    uint32_t ChangeSamples(const PreciseSettings& s, double pitch, bool settled) const noexcept;
    // Whether the pitch, `offset` semitones from the nearest note, may still be on its way to
    // the next one.
    bool Arriving(const PreciseSettings& s, double offset) const noexcept;
    void StartNote(const PreciseSettings& s, const FrameFeatures& f, int note, WFETMidiOut* out) noexcept;
    enum class KeepCandidate { No, Yes };
    void EndNote(WFETMidiOut* out, KeepCandidate keep = KeepCandidate::No) noexcept;
    void WriteBendAndExpression(const PreciseSettings& s, const FrameFeatures& f, double pitch,
                                WFETMidiOut* out) noexcept;

    bool sounding_ = false;
    bool interrupted_ = false; // an attack or a break since the note settled
    uint32_t belowBreakSamples_ = 0; // in a row, of a periodicity under the break line
    int note_ = 0;
    int interruptedNote_ = -1; // the note an attack or break ended, until another one starts
    int releasedNote_ = -1;    // the note a release ended, until an attack or another note
    double releaseFloor_ = 0.0; // the lowest power of the input since that release
    int stepFrom_ = -1;        // the note a legato step left for this one; -1 after a start
    bool stepLanded_ = false;  // that step changed the note within a tenth of its middle
    bool attackSinceEnd_ = false; // an attack since the last note ended
    int noteVelocity_ = 0;
    uint32_t noteSamples_ = 0;
    uint32_t gapSamples_ = 0;
    int candidate_ = -1;
    uint32_t candidateSamples_ = 0;
    uint32_t candidateMisses_ = 0; // unclear samples since the candidate was last seen
    uint32_t awaitedSamples_ = 0;  // the confirmed candidate's start has waited for its fundamental
    int rival_ = -1;               // the other pitch seen meanwhile
    uint32_t rivalSamples_ = 0;
    uint32_t acrossSamples_ = 0;   // in a row, of a confirmed candidate, in a neighbour's span
    double candidateLow_ = 0.0;
    double candidateHigh_ = 0.0;
    double quickPitch_ = 0.0;
    double lastPitch_ = 0.0; // of the frame before, 0 if it had none
    int runNote_ = -1;       // the nearest note of the latest frames in a row, -1 for none
    bool runGlidedIn_ = false; // that run came from between the sounding note and its note
    double slowPitch_ = 0.0;
    uint32_t followedSamples_ = 0; // since the pitch followers last started afresh
    // What the pitch followers knew before the pitch jumped away, while it may still come back.
    struct Followed {
        double quickPitch = 0.0;
        double slowPitch = 0.0;
        uint32_t samples = 0;
        bool leftQuickly = false;
    };
    std::optional<Followed> beforeJump_;
    uint32_t sinceJump_ = 0;
    bool hadPitch_ = false; // the frame before had a pitch
    double noteClarity_ = 0.0;
    double clarityDeviation_ = 0.0; // mean distance of the periodicity from noteClarity_
    double soundingFrequency_ = 0.0;
    double ringingFrequency_ = 0.0;  // cancelled by the analysis
    double replacedFrequency_ = 0.0; // the note the sounding one replaced, while it dominates
    double previousFrequency_ = 0.0; // that note, while it may still ring at all
    double previousNominal_ = 0.0;   // the same, at the pitch of its note number
    uint32_t ringSamples_ = 0;       // since the last note started or ended
    uint32_t hiddenSamples_ = 0;     // of frames in a row that a mixture hid
    uint32_t sinceOnset_ = 0;        // since the level was last at or below the start level
    uint64_t clock_ = 0;             // samples decided on so far
    uint32_t restingSamples_ = 0;    // of frames in a row whose pitch hardly moved
    bool leftQuickly_ = false;       // the pitch glided or jumped on its way out of the note's span
    int moveDirection_ = 0;    // +1 rising, -1 falling, 0 resting or unknown
    uint64_t moveStart_ = 0;   // when the pitch began to move the way it moves now
    uint64_t arrivalMove_ = 0; // how long it had moved so when it came within a tenth of a note
    bool intoNote_ = false;    // whether it is within that tenth now
    VibratoWatch vibrato_;
    // The envelope of the power left with the note `tailFrequency_` cancelled, and its lowest
    // since the analysis began to cancel that note: the tail of the note before that one, while
    // it still rings.
    double tailPeak_ = 0.0;
    double tailFloor_ = std::numeric_limits<double>::infinity();
    double tailFrequency_ = 0.0;
    double loudest_ = 0.0; // peak level of the clearly periodic input lately, 16-bit scale
    // Since that input was last above the floor of every start; never, to begin with.
    uint32_t sinceAboveFloor_ = std::numeric_limits<uint32_t>::max();
};

} // namespace vocato::precise
