#include "Clock.h"

#include <chrono>

namespace vocato::media {

int64_t SystemClock::NowMicros() const noexcept {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace vocato::media
