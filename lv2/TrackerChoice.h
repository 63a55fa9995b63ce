// The one place where the "tracker" port becomes the kind of tracker the node is built with.
#pragma once

#include "PitchTracker.h"

namespace vocato::lv2 {

// The kind the port asks for: 1 precise, anything else classic.
TrackerKind TrackerKindForPort(float value);

} // namespace vocato::lv2
