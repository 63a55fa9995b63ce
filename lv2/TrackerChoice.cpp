#include "TrackerChoice.h"

#include <cmath>

namespace vocato::lv2 {

TrackerKind TrackerKindForPort(float value) {
    return std::lround(value) == 1 ? TrackerKind::Precise : TrackerKind::Classic;
}

} // namespace vocato::lv2
