// After creation the engine allocates nothing: ten seconds of audio through the whole
// per-chunk path, with parameter changes in between, under a counting operator new.
#include "EngineTestSupport.h"

#include "CountingNew.h"

#include <gtest/gtest.h>

namespace {

using namespace enginetest;

TEST(EngineAllocation, TenSecondsOfAudioAllocateNothingAfterCreation) {
    std::vector<int16_t> signal = Render({.frequency = 220, .seconds = 5.0, .harmonics = {1, 0.5, 0.3},
                                          .vibratoCents = 40});
    const std::vector<int16_t> second = Render({.frequency = 330, .seconds = 5.0, .levelDb = -30});
    signal.insert(signal.end(), second.begin(), second.end());

    vocato::test::StartCountingAllocations();
    EnginePtr s = NewEngine();
    ASSERT_NE(s, nullptr);
    ConfigureVoice(s.get());
    EXPECT_GT(vocato::test::StopCountingAllocations(), 0u) << "the counter does not see allocations";

    WFETMidiOut out{};
    int notes = 0;
    vocato::test::StartCountingAllocations();
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
    EXPECT_EQ(vocato::test::StopCountingAllocations(), 0u);
    EXPECT_GT(notes, 0) << "the signal never reached the note decision";
}

} // namespace
