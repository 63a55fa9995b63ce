// The one place where the "tracker" port becomes the kind of tracker the node is built with.
#pragma once

#include "PitchTracker.h"

namespace vocato::lv2 {

// The kind the port asks for (0 classic, 1 precise), or classic when this build has no
// tracker of that kind (TrackerFactoryFor gives none).
TrackerKind TrackerKindForPort(float value);

} // namespace vocato::lv2
