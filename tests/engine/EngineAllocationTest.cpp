// After creation neither tracker allocates: seconds of audio through the whole per-chunk path,
// with parameter changes in between, under a counting operator new.
#include "EngineTestSupport.h"
#include "precise/PreciseTestSupport.h"

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
    EnginePtr s = VoiceEngine();
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

TEST(PreciseAllocation, ProcessingAndParameterChangesAllocateNothing) {
    using namespace precisetest;
    const auto signal = Concat({PlayedNote(45, 2.0), AddNoise(Silence(1.0), -30), PlayedNote(64, 2.0)});
    auto tracker = MakeTracker();
    WFETMidiOut out{-1, -1, 0, 8192, 0};
    int notes = 0;
    vocato::test::StartCountingAllocations();
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t i = 0; i + 16 <= signal.size(); i += 16) {
            tracker->Process(signal.data() + i, 32);
            tracker->Calc(&out);
            notes += out.noteOn >= 0 ? 1 : 0;
            if (i % 88000 == 0) {
                // Rate and range changes re-derive the analysis in place.
                tracker->Set(WFET_SAMPLE_RATE, pass == 0 ? 192000 : 44100);
                tracker->Set(WFET_MIN_NOTE, 11);
                tracker->Set(WFET_MAX_FREQ, pass == 0 ? 90000 : 2000);
                tracker->Set(WFET_MIN_NOTE, 36);
                tracker->Set(WFET_BEND_RANGE, 3);
            }
        }
    }
    EXPECT_EQ(vocato::test::StopCountingAllocations(), 0u);
    EXPECT_GT(notes, 0);
}

} // namespace
