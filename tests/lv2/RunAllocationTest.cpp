// run() never allocates: this binary replaces the global operator new and counts the calls
// made while the plugin runs, parameter changes and a preset change included.
#include "TestHost.h"

#include "Fixtures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<size_t> allocations{0};

void* Allocate(size_t size) {
    if (counting.load(std::memory_order_relaxed)) {
        allocations.fetch_add(1, std::memory_order_relaxed);
    }
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(size_t size) {
    return Allocate(size);
}
void* operator new[](size_t size) {
    return Allocate(size);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, size_t) noexcept {
    std::free(p);
}

namespace vocato::lv2::test {
namespace {

TEST(PluginRun, AllocatesNothingWhileRunningAndChangingParameters) {
    TestHost host;
    host.EnableWorker();
    counting = true;
    ASSERT_TRUE(host.Instantiate(44100.0));
    host.Activate();
    counting = false;
    // The counter sees the plugin's own allocations: making the node allocates.
    ASSERT_GT(allocations.load(), 0u);

    const std::vector<vocato::test::Note> notes = {
        {62, 0.2, 0.6}, {65, 0.7, 1.1}, {69, 1.2, 1.6}, {64, 1.7, 2.2}};
    const std::vector<float> melody = vocato::test::RenderMelody(notes, 73, 44100.0);
    const size_t half = melody.size() / 2;
    allocations = 0;
    size_t done = 0;
    for (int block = 0; done < melody.size(); ++block) {
        if (done >= half && done < half + 256) {
            host.SetControl(kPreset, 4);
            host.SetControl(kProgram, 30);
            host.SetControl(kTranspose, -12);
            host.SetControl(kStartLevelDb, -30);
            host.SetControl(kMedian, 1);
        }
        const auto frames = static_cast<uint32_t>(std::min<size_t>(256, melody.size() - done));
        counting = true;
        host.RunPlugin(melody.data() + done, frames);
        counting = false; // the test host's own reading of the events is not the plugin's
        host.CollectMidi();
        host.DoScheduledWork();
        done += frames;
    }
    EXPECT_EQ(allocations.load(), 0u);
    EXPECT_EQ(host.WorkDone(), 1u) << "the preset change asked for a spare tracker";
    size_t noteOns = 0;
    for (const MidiEvent& e : host.Events()) {
        noteOns += (e.bytes[0] & 0xF0) == 0x90;
    }
    EXPECT_GE(noteOns, notes.size()) << "the plugin did not run the whole melody";
}

} // namespace
} // namespace vocato::lv2::test
