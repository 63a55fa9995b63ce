#include "TrackerSetting.h"

#include "Preferences.h"

namespace vocato {

TrackerKind StoredTracker() {
    int32_t value = 0;
    if (prefs == nullptr) {
        return kDefaultTrackerKind;
    }
    switch (prefs->GetInt32(kTrackerKey, static_cast<int32_t>(kDefaultTrackerKind), &value)) {
    case static_cast<int32_t>(TrackerKind::Classic):
        return TrackerKind::Classic;
    case static_cast<int32_t>(TrackerKind::Precise):
        return TrackerKind::Precise;
    default:
        return kDefaultTrackerKind;
    }
}

void StoreTracker(TrackerKind kind) {
    if (prefs != nullptr) {
        prefs->SetInt32(kTrackerKey, static_cast<int32_t>(kind));
    }
}

} // namespace vocato
