#include "TestHost.h"

#include "VocatoAddOn.h"

#include <gtest/gtest.h>
#include <lv2/atom/util.h>
#include <lv2/midi/midi.h>

#include <algorithm>
#include <stdexcept>

namespace vocato::lv2::test {

std::string BundleDir() {
    return VOCATO_LV2_BUNDLE_DIR;
}

std::unique_ptr<VocatoNode> MakeNode() {
    VocatoAddOn addOn(0);
    const FlavorInfo* flavor = nullptr;
    addOn.GetFlavorAt(0, &flavor);
    NodeOptions options;
    options.internalSynth = false;
    return addOn.InstantiateNodeFor(flavor, std::move(options));
}

TestHost::TestHost(double rate, bool withUridMap, bool withWorker) : world_(lilv_world_new()) {
    LilvNode* bundle = lilv_new_file_uri(world_, nullptr, (BundleDir() + "/").c_str());
    LilvNode* uri = lilv_new_uri(world_, kPluginUri);
    lilv_world_load_bundle(world_, bundle);
    plugin_ = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_), uri);
    lilv_node_free(bundle);
    lilv_node_free(uri);
    if (plugin_ == nullptr) {
        lilv_world_free(world_);
        throw std::runtime_error("the bundle holds no Vocato plugin");
    }
    for (const ControlPort& port : kControlPorts) {
        controls_[port.index] = port.defaultValue;
    }
    std::vector<const LV2_Feature*> features;
    if (withUridMap) {
        features.push_back(&urids_.feature);
    }
    if (withWorker) {
        features.push_back(&scheduleFeature_);
    }
    features.push_back(nullptr);
    instance_ = lilv_plugin_instantiate(plugin_, rate, features.data());
    if (instance_ != nullptr) {
        lilv_instance_connect_port(instance_, kAudioIn, audio_.data());
        lilv_instance_connect_port(instance_, kMidiOut, midi_.data());
        for (uint32_t port = kLatency; port < kPortCount; ++port) {
            lilv_instance_connect_port(instance_, port, &controls_[port]);
        }
    }
}

TestHost::~TestHost() {
    if (instance_ != nullptr) {
        lilv_instance_free(instance_);
    }
    lilv_world_free(world_);
}

void TestHost::Run(const std::vector<float>& samples, const std::vector<uint32_t>& blockSizes) {
    for (size_t done = 0, i = 0; done < samples.size(); done += lastRun_, ++i) {
        RunPlugin(samples.data() + done,
                  std::min<uint32_t>(blockSizes[i % blockSizes.size()], samples.size() - done));
        Collect();
        DoWork();
    }
}

void TestHost::RunPlugin(const float* samples, uint32_t frames) {
    std::copy_n(samples, frames, audio_.begin());
    auto* sequence = reinterpret_cast<LV2_Atom_Sequence*>(midi_.data());
    sequence->atom.type = 0;
    sequence->atom.size = 32768; // the capacity a host offers
    lilv_instance_run(instance_, frames);
    lastRun_ = frames;
}

void TestHost::Collect() {
    const auto* sequence = reinterpret_cast<const LV2_Atom_Sequence*>(midi_.data());
    LV2_ATOM_SEQUENCE_FOREACH(sequence, ev) {
        EXPECT_EQ(ev->body.type, urids_.Map(LV2_MIDI__MidiEvent));
        const auto* bytes = reinterpret_cast<const uint8_t*>(ev + 1);
        events_.push_back({framesRun_ + ev->time.frames, {bytes, bytes + ev->body.size}});
    }
    framesRun_ += lastRun_;
}

void TestHost::DoWork() {
    if (workScheduled_ == 0) {
        return;
    }
    const auto* worker = static_cast<const LV2_Worker_Interface*>(
        lilv_instance_get_extension_data(instance_, LV2_WORKER__interface));
    ASSERT_NE(worker, nullptr) << "the plugin asked for work but has no worker interface";
    for (; workScheduled_ != 0; --workScheduled_, ++workDone_) {
        worker->work(lilv_instance_get_handle(instance_), nullptr, nullptr, 0, nullptr);
    }
}

} // namespace vocato::lv2::test
