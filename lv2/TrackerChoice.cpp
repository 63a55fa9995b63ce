#include "TrackerChoice.h"

#include "TrackerStock.h"

#include <cmath>

namespace vocato::lv2 {

TrackerKind TrackerKindForPort(float value) {
    const TrackerKind wanted =
        std::lround(value) == 1 ? TrackerKind::Precise : TrackerKind::Classic;
    return TrackerFactoryFor(wanted) ? wanted : TrackerKind::Classic;
}

} // namespace vocato::lv2
