// The twenty input presets as the benchmark feeds them to a tracker: note range, bend range,
// levels and the classic engine's shape-matching settings, in the order the converter node
// uses. The node owns the real table; this copy lets the benchmark run trackers on files
// before the node's converter exists.
#pragma once

#include "PitchTracker.h"

namespace vocato::bench {

// Feeds preset `number` (1-20) to the tracker at the given sample rate; false for an unknown
// number.
bool ApplyPreset(PitchTracker& tracker, int number, double sampleRate);

} // namespace vocato::bench
