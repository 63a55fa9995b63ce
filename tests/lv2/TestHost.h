// A small LV2 host on lilv for the plugin's tests: loads the bundle from the build tree, offers
// urid:map (and worker:schedule when asked), runs the plugin in blocks and collects its MIDI
// with frame times counted from the first sample it was given.
#pragma once

#include "PluginPorts.h"
#include "VocatoNode.h"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vocato::lv2::test {

struct MidiEvent {
    int64_t frame = 0;
    std::vector<uint8_t> bytes;
    bool operator==(const MidiEvent&) const = default;
};

struct UridMap {
    LV2_URID Map(const char* uri) { return ids.emplace(uri, ids.size() + 1).first->second; }
    std::map<std::string, LV2_URID> ids;
    LV2_URID_Map map{this, [](LV2_URID_Map_Handle self, const char* uri) {
                         return static_cast<UridMap*>(self)->Map(uri);
                     }};
    LV2_Feature feature{LV2_URID__map, &map};
};

class TestHost {
public:
    // Instantiated() tells whether the plugin accepted; a worker's work is done after the run
    // that asked for it, as a worker thread would between two cycles.
    explicit TestHost(double rate = 44100, bool withUridMap = true, bool withWorker = false);
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    bool Instantiated() const { return instance_ != nullptr; }
    LilvWorld* World() const { return world_; }
    const LilvPlugin* Plugin() const { return plugin_; }
    void Activate() { lilv_instance_activate(instance_); }
    void Deactivate() { lilv_instance_deactivate(instance_); }
    void SetControl(PortIndex port, float value) { controls_[port] = value; }
    float Latency() const { return controls_[kLatency]; }

    // Runs over `samples` in blocks whose sizes cycle through `blockSizes`.
    void Run(const std::vector<float>& samples, const std::vector<uint32_t>& blockSizes = {256});
    // One run in its steps: the plugin's own, the host reading the MIDI, the work asked for.
    void RunPlugin(const float* samples, uint32_t frames);
    void Collect();
    void DoWork();
    const std::vector<MidiEvent>& Events() const { return events_; }
    size_t WorkDone() const { return workDone_; }

private:
    UridMap urids_;
    LV2_Worker_Schedule schedule_{this, [](LV2_Worker_Schedule_Handle self, uint32_t, const void*) {
                                      ++static_cast<TestHost*>(self)->workScheduled_;
                                      return LV2_WORKER_SUCCESS;
                                  }};
    LV2_Feature scheduleFeature_{LV2_WORKER__schedule, &schedule_};
    LilvWorld* world_ = nullptr;
    const LilvPlugin* plugin_ = nullptr;
    LilvInstance* instance_ = nullptr;
    std::array<float, kPortCount> controls_{};
    std::vector<float> audio_ = std::vector<float>(8192);
    std::vector<uint64_t> midi_ = std::vector<uint64_t>(4097); // 64-bit words keep it aligned
    size_t workScheduled_ = 0;
    size_t workDone_ = 0;
    int64_t framesRun_ = 0;
    uint32_t lastRun_ = 0;
    std::vector<MidiEvent> events_;
};

std::string BundleDir();

// A node made as the plugin makes its own: without the internal synthesizer.
std::unique_ptr<VocatoNode> MakeNode();

} // namespace vocato::lv2::test
