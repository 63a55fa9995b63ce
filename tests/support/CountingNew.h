// A binary that links CountingNew.cpp has its global operator new replaced by one that counts
// its calls, so that a test can prove a stretch of code allocates nothing.
#pragma once

#include <cstddef>

namespace vocato::test {

// Counts every operator new, on any thread, from now until StopCountingAllocations.
void StartCountingAllocations();
// Stops counting; the calls counted since the start.
size_t StopCountingAllocations();

} // namespace vocato::test
