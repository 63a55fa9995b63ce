#include "TestHost.h"

#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vocato::lv2::test {

std::string BundleDir() {
    return VOCATO_LV2_BUNDLE_DIR;
}

UridMap::UridMap() {
    map_.handle = this;
    map_.map = &UridMap::MapCallback;
    feature_.URI = LV2_URID__map;
    feature_.data = &map_;
}

LV2_URID UridMap::Map(const char* uri) {
    auto [it, added] = ids_.emplace(uri, static_cast<LV2_URID>(ids_.size() + 1));
    return it->second;
}

LV2_URID UridMap::MapCallback(LV2_URID_Map_Handle handle, const char* uri) {
    return static_cast<UridMap*>(handle)->Map(uri);
}

TestHost::TestHost() : audio_(kMaxBlock) {
    world_ = lilv_world_new();
    LilvNode* bundle = lilv_new_file_uri(world_, nullptr, (BundleDir() + "/").c_str());
    lilv_world_load_bundle(world_, bundle);
    lilv_node_free(bundle);
    LilvNode* uri = lilv_new_uri(world_, kPluginUri);
    plugin_ = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_), uri);
    lilv_node_free(uri);
    midiEvent_ = urids_.Map(LV2_MIDI__MidiEvent);
    for (const ControlPort& port : kControlPorts) {
        controls_[port.index] = port.defaultValue;
    }
}

TestHost::~TestHost() {
    if (instance_ != nullptr) {
        lilv_instance_free(instance_);
    }
    lilv_world_free(world_);
}

bool TestHost::Instantiate(double rate, bool withUridMap) {
    if (plugin_ == nullptr) {
        throw std::runtime_error("the bundle holds no Vocato plugin");
    }
    schedule_ = {this, &TestHost::ScheduleWork};
    scheduleFeature_ = {LV2_WORKER__schedule, &schedule_};
    std::vector<const LV2_Feature*> features;
    if (withUridMap) {
        features.push_back(urids_.Feature());
    }
    if (workerEnabled_) {
        features.push_back(&scheduleFeature_);
    }
    features.push_back(nullptr);
    instance_ = lilv_plugin_instantiate(plugin_, rate, features.data());
    if (instance_ == nullptr) {
        return false;
    }
    midiBuffer_.assign(kMaxBlock * 4, 0);
    ConnectAll();
    return true;
}

void TestHost::ConnectAll() {
    lilv_instance_connect_port(instance_, kAudioIn, audio_.data());
    lilv_instance_connect_port(instance_, kMidiOut, midiBuffer_.data());
    for (uint32_t port = kLatency; port < kPortCount; ++port) {
        lilv_instance_connect_port(instance_, port, &controls_[port]);
    }
}

void TestHost::Activate() {
    lilv_instance_activate(instance_);
}

void TestHost::Deactivate() {
    lilv_instance_deactivate(instance_);
}

void TestHost::RunBlock(const float* samples, uint32_t frames) {
    RunPlugin(samples, frames);
    CollectMidi();
    DoScheduledWork();
}

LV2_Worker_Status TestHost::ScheduleWork(LV2_Worker_Schedule_Handle handle, uint32_t, const void*) {
    ++static_cast<TestHost*>(handle)->workScheduled_;
    return LV2_WORKER_SUCCESS;
}

void TestHost::DoScheduledWork() {
    if (workScheduled_ == 0) {
        return;
    }
    const auto* worker = static_cast<const LV2_Worker_Interface*>(
        lilv_instance_get_extension_data(instance_, LV2_WORKER__interface));
    if (worker == nullptr) {
        throw std::runtime_error("the plugin asked for work but has no worker interface");
    }
    for (; workScheduled_ != 0; --workScheduled_, ++workDone_) {
        worker->work(lilv_instance_get_handle(instance_), nullptr, nullptr, 0, nullptr);
    }
}

void TestHost::RunPlugin(const float* samples, uint32_t frames) {
    if (frames != 0) {
        std::copy(samples, samples + frames, audio_.begin());
    }
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(midiBuffer_.data());
    sequence->atom.type = 0;
    sequence->atom.size = std::min<uint32_t>(midiCapacity_, midiBuffer_.size() * 8 - 8);
    lilv_instance_run(instance_, frames);
    lastRun_ = frames;
}

void TestHost::Run(const std::vector<float>& samples, const std::vector<uint32_t>& blockSizes) {
    size_t done = 0;
    for (size_t i = 0; done < samples.size(); ++i) {
        const auto frames = static_cast<uint32_t>(
            std::min<size_t>(blockSizes[i % blockSizes.size()], samples.size() - done));
        RunBlock(samples.data() + done, frames);
        done += frames;
    }
}

void TestHost::CollectMidi() {
    const auto* sequence = reinterpret_cast<const LV2_Atom_Sequence*>(midiBuffer_.data());
    LV2_ATOM_SEQUENCE_FOREACH(sequence, ev) {
        if (ev->body.type != midiEvent_) {
            throw std::runtime_error("the MIDI output holds an event that is not MIDI");
        }
        const auto* bytes = reinterpret_cast<const uint8_t*>(ev + 1);
        events_.push_back({framesRun_ + ev->time.frames, {bytes, bytes + ev->body.size}});
    }
    framesRun_ += lastRun_;
}

} // namespace vocato::lv2::test
