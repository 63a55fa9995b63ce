// The stored choice of pitch tracker, "Tracker" in the settings: 0 classic, 1 precise. The
// window builds its converter with it; the preferences window changes it for the next start.
#pragma once

#include "PitchTracker.h"

namespace vocato {

inline constexpr const char* kTrackerKey = "Tracker";

// The stored tracker, or the default when the store has none (or holds something else).
TrackerKind StoredTracker();
void StoreTracker(TrackerKind kind);

} // namespace vocato
