// One plugin instance: a window-less converter node made by the add-on, fed the host's audio
// in 16-sample frames, its MIDI written into the host's atom sequence.
//
// Threads follow LV2's classes: Create, Activate and Deactivate run on the host's
// instantiation thread; Run on its audio thread, which is then the node's thread; Work on the
// host's worker thread. Run never allocates, locks or blocks.
//
// A preset change swaps in a tracker built ahead of time. When the host offers a worker,
// Run asks it to build the next spare, so every change gets a fresh tracker; without one,
// the spares are refilled at activation, and once they run out a preset change re-feeds the
// running tracker.
#pragma once

#include "AtomMidiSink.h"
#include "ControlCache.h"
#include "PluginPorts.h"
#include "VocatoAddOn.h"

#include "Clock.h"
#include "PitchTracker.h"

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>

#include <array>
#include <memory>
#include <mutex>

namespace vocato::lv2 {

class VocatoPlugin {
public:
    // Null, after one line on standard error, when the host lacks a required feature or the
    // node cannot be made.
    static std::unique_ptr<VocatoPlugin> Create(double rate, const LV2_Feature* const* features);

    // Any thread that does not race Run.
    void ConnectPort(uint32_t port, void* data) noexcept;
    // Instantiation thread. Makes the node anew when the "tracker" port asks for another kind,
    // refills the node's spare trackers, and starts it: program and bend range go out at the
    // start of the next run.
    void Activate();
    // Audio thread.
    void Run(uint32_t frames) noexcept;
    // Instantiation thread. Notes still sounding are ended at the start of the next run.
    void Deactivate() noexcept;
    // Worker thread. Frees retired trackers and builds spares.
    void Work();

    // Through Create, which reports failures.
    VocatoPlugin(double rate, LV2_URID_Map* map, const LV2_Worker_Schedule* schedule);

private:
    void MakeNode(TrackerKind kind);
    void Feed(const float* samples, uint32_t frames) noexcept;

    double rate_;
    const LV2_Worker_Schedule* schedule_; // null when the host has no worker
    // Work and the node's replacement in Activate may run on two threads at once.
    std::mutex nodeSwap_;
    media::ManualClock clock_;
    AtomMidiSink sink_;
    ControlCache controls_;
    VocatoAddOn addOn_{0};
    std::unique_ptr<VocatoNode> node_;
    TrackerKind trackerKind_ = TrackerKind::Classic;

    const float* audioIn_ = nullptr;
    LV2_Atom_Sequence* midiOut_ = nullptr;
    float* latency_ = nullptr;

    std::array<int16_t, kWFETFrameSamples> frame_{};
    uint32_t frameFill_ = 0;
    int64_t samplesFed_ = 0;
};

} // namespace vocato::lv2
