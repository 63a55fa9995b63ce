// After creation the engine allocates nothing: ten seconds of audio through the whole
// per-chunk path, with parameter changes in between, under a counting operator new.
#include "EngineTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> gAllocations{0};
} // namespace

// Replaces the global allocation functions so every allocation of the process is counted.
// The replacements keep the malloc/free pairing internally; the compiler cannot see that
// and warns about it, which this file alone silences.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using namespace enginetest;

TEST(EngineAllocation, TenSecondsOfAudioAllocateNothingAfterCreation) {
    std::vector<int16_t> signal = Render({.frequency = 220, .seconds = 5.0, .harmonics = {1, 0.5, 0.3},
                                          .vibratoCents = 40});
    const std::vector<int16_t> second = Render({.frequency = 330, .seconds = 5.0, .levelDb = -30});
    signal.insert(signal.end(), second.begin(), second.end());

    EnginePtr s = NewEngine();
    ASSERT_NE(s, nullptr);
    ConfigureVoice(s.get());
    EXPECT_GT(gAllocations.load(), 0) << "the counter does not see allocations";

    WFETMidiOut out{};
    int notes = 0;
    const long before = gAllocations.load();
    for (size_t i = 0; i + 16 <= signal.size(); i += 16) {
        WFETProcess(s.get(), signal.data() + i, 32);
        WFETCalc(s.get(), &out);
        notes += out.noteOn >= 0 ? 1 : 0;
        if (i % 44800 == 0) {
            WFETSet(s.get(), WFET_MAX_NOTE, 76);
            WFETSet(s.get(), WFET_FILTER_SPAN, 1.2);
            WFETSet(s.get(), WFET_BEND_RANGE, 2);
        }
    }
    EXPECT_EQ(gAllocations.load() - before, 0);
    EXPECT_GT(notes, 0) << "the signal never reached the note decision";
}

} // namespace
