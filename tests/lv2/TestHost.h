// A small LV2 host on lilv for the plugin's tests: loads the bundle from the build tree,
// offers urid:map, runs the plugin in blocks and collects its MIDI with absolute frame times.
#pragma once

#include "PluginPorts.h"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vocato::lv2::test {

struct MidiEvent {
    int64_t frame = 0; // from the first sample the plugin was given
    std::vector<uint8_t> bytes;
    bool operator==(const MidiEvent&) const = default;
};

class UridMap {
public:
    UridMap();
    LV2_URID Map(const char* uri);
    const LV2_Feature* Feature() const { return &feature_; }

private:
    static LV2_URID MapCallback(LV2_URID_Map_Handle handle, const char* uri);
    std::map<std::string, LV2_URID> ids_;
    LV2_URID_Map map_{};
    LV2_Feature feature_{};
};

class TestHost {
public:
    TestHost();
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    const LilvPlugin* Plugin() const { return plugin_; }
    LilvWorld* World() const { return world_; }

    // Before Instantiate: offer a worker. The work a run asks for is done after that run,
    // as a worker thread would between two cycles.
    void EnableWorker() { workerEnabled_ = true; }
    size_t WorkDone() const { return workDone_; }

    // Null when the plugin refuses; `withUridMap` false leaves out the required feature.
    bool Instantiate(double rate, bool withUridMap = true);
    void Activate();
    void Deactivate();

    void SetControl(PortIndex port, float value) { controls_[port] = value; }
    float Latency() const { return controls_[kLatency]; }
    // Connects every port to the host's buffers; Instantiate does it once.
    void ConnectAll();

    // Runs the plugin over `samples` in blocks whose sizes cycle through `blockSizes`.
    // Events are appended to Events().
    void Run(const std::vector<float>& samples, const std::vector<uint32_t>& blockSizes);
    // One run of `frames` frames of the given samples (at most the buffer's size).
    void RunBlock(const float* samples, uint32_t frames);
    // RunBlock in its steps: the plugin's run, the host reading the MIDI it wrote, and the
    // work the run asked for.
    void RunPlugin(const float* samples, uint32_t frames);
    void CollectMidi();
    void DoScheduledWork();

    const std::vector<MidiEvent>& Events() const { return events_; }
    // The capacity in bytes offered to the MIDI output in each run.
    void SetMidiCapacity(uint32_t bytes) { midiCapacity_ = bytes; }

private:
    static LV2_Worker_Status ScheduleWork(LV2_Worker_Schedule_Handle handle, uint32_t size,
                                          const void* data);
    static constexpr uint32_t kMaxBlock = 8192;

    UridMap urids_;
    LilvWorld* world_ = nullptr;
    const LilvPlugin* plugin_ = nullptr;
    LilvInstance* instance_ = nullptr;
    std::array<float, kPortCount> controls_{};
    std::vector<float> audio_;
    std::vector<uint64_t> midiBuffer_; // 64-bit words keep the sequence aligned
    uint32_t midiCapacity_ = 32768;
    LV2_URID midiEvent_ = 0;
    bool workerEnabled_ = false;
    LV2_Worker_Schedule schedule_{};
    LV2_Feature scheduleFeature_{};
    size_t workScheduled_ = 0;
    size_t workDone_ = 0;
    int64_t framesRun_ = 0;
    uint32_t lastRun_ = 0;
    std::vector<MidiEvent> events_;
};

// The bundle in the build tree.
std::string BundleDir();

} // namespace vocato::lv2::test
