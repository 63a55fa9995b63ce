// run() never allocates: this binary replaces the global operator new and counts the calls
// made while the plugin runs, parameter changes and a preset change included.
#include "TestHost.h"

#include "CountingNew.h"

#include "Fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vocato::lv2::test {
namespace {

TEST(PluginRun, AllocatesNothingWhileRunningAndChangingParameters) {
    TestHost host(44100, true, true);
    host.Activate();

    const std::vector<vocato::test::Note> notes = {
        {62, 0.2, 0.6}, {65, 0.7, 1.1}, {69, 1.2, 1.6}, {64, 1.7, 2.2}};
    const std::vector<float> melody = vocato::test::RenderMelody(notes, 73, 44100.0);
    size_t inRun = 0, inWork = 0;
    for (size_t done = 0; done < melody.size(); done += 256) {
        if (done >= melody.size() / 2 && done < melody.size() / 2 + 256) {
            host.SetControl(kPreset, 4);
            host.SetControl(kProgram, 30);
            host.SetControl(kTranspose, -12);
            host.SetControl(kStartLevelDb, -30);
            host.SetControl(kMedian, 1);
        }
        vocato::test::StartCountingAllocations();
        host.RunPlugin(melody.data() + done,
                       static_cast<uint32_t>(std::min<size_t>(256, melody.size() - done)));
        inRun += vocato::test::StopCountingAllocations();
        host.Collect(); // the test host's own reading of the events is not the plugin's
        vocato::test::StartCountingAllocations();
        host.DoWork();
        inWork += vocato::test::StopCountingAllocations();
    }
    EXPECT_EQ(inRun, 0u);
    EXPECT_EQ(host.WorkDone(), 1u) << "the preset change asked for a spare tracker";
    EXPECT_GT(inWork, 0u) << "the counter must see the plugin's own allocations";
    const auto noteOns = std::ranges::count_if(
        host.Events(), [](const MidiEvent& e) { return (e.bytes[0] & 0xF0) == 0x90; });
    EXPECT_GE(noteOns, std::ssize(notes)) << "the plugin did not run the whole melody";
}

} // namespace
} // namespace vocato::lv2::test
