// The decision interface that every tracker offers the converter node.
//
// A tracker consumes signed 16-bit mono samples in chunks of 16 (the last may be shorter) and,
// after each chunk, fills a WFETMidiOut with its decision: note-off, note-on with velocity,
// 14-bit bend and expression. Trackers take the same parameter codes as WFETSet, so a preset
// configures either kind the same way; a tracker ignores (and accepts) the codes that mean
// nothing to its method.
//
// Thread contract: creation and destruction may allocate and happen off the audio thread;
// Set, Process and Calc are called by one thread at a time (the audio thread) and never
// allocate, lock or block.
#pragma once

#include "WFET.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace vocato {

enum class TrackerKind : int32_t { Classic = 0, Precise = 1 };

// What the product uses unless told otherwise: the precise tracker finds more notes and finds
// them sooner on the benchmark melodies (see README).
inline constexpr TrackerKind kDefaultTrackerKind = TrackerKind::Precise;

class PitchTracker {
public:
    virtual ~PitchTracker() = default;

    // WFET_ACCEPTED or WFET_REJECTED, with WFETSet's codes and ranges.
    virtual int32_t Set(int16_t code, double value) noexcept = 0;
    virtual void Process(const int16_t* samples, uint32_t byteCount) noexcept = 0;
    virtual void Calc(WFETMidiOut* out) noexcept = 0;

    // Samples between a sound's onset and the earliest frame that can report it; hosts
    // report it as latency.
    virtual uint32_t DecisionDelaySamples() const noexcept = 0;
};

// The specified engine behind the tracker interface; null when the engine cannot be created.
std::unique_ptr<PitchTracker> MakeClassicTracker();
// The precise tracker (normalised square-difference analysis, attack detection, note
// hysteresis); null when it cannot be created.
std::unique_ptr<PitchTracker> MakePreciseTracker();

std::string_view TrackerName(TrackerKind kind);
// Parses "classic" or "precise"; false for anything else.
bool ParseTrackerKind(std::string_view text, TrackerKind& kind);

} // namespace vocato
