// Watches the threads marked as real-time (media::AudioThreadScope): this test binary replaces
// the allocator, the mutex and the printing functions with versions that count the calls
// made from a marked thread before doing the real work.
#pragma once

#include <string>

namespace vocato::test {

// Any thread.
long RealTimeViolations();
// The function named in the first violation since the last reset ("" when none).
std::string FirstViolation();
void ResetRealTimeViolations();

} // namespace vocato::test
