#include "PitchTracker.h"

namespace vocato {

std::string_view TrackerName(TrackerKind kind) {
    return kind == TrackerKind::Precise ? "precise" : "classic";
}

bool ParseTrackerKind(std::string_view text, TrackerKind& kind) {
    if (text == "classic") {
        kind = TrackerKind::Classic;
        return true;
    }
    if (text == "precise") {
        kind = TrackerKind::Precise;
        return true;
    }
    return false;
}

} // namespace vocato
