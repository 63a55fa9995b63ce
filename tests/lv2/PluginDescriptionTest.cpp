// The bundle as hosts see it: valid Turtle, and ports that agree with the plugin's C++ table
// and with the node's own values.
#include "TestHost.h"

#include "PluginPorts.h"
#include "Presets.h"
#include "VocatoAddOn.h"

#include <gtest/gtest.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace vocato::lv2::test {
namespace {

std::string RunCommand(const std::string& command, int& status) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char chunk[512];
    while (pipe != nullptr && std::fgets(chunk, sizeof chunk, pipe) != nullptr) {
        output += chunk;
    }
    status = pipe != nullptr ? pclose(pipe) : -1;
    return output;
}

// lilv's nodes are freed by their owner; this keeps the tests free of leaks.
using NodePtr = std::unique_ptr<LilvNode, decltype(&lilv_node_free)>;

NodePtr Uri(LilvWorld* world, const char* uri) {
    return {lilv_new_uri(world, uri), &lilv_node_free};
}

class PluginDescription : public ::testing::Test {
protected:
    TestHost host;
    const LilvPlugin* plugin = host.Plugin();
};

TEST(PluginBundle, PassesTheLv2SchemaValidator) {
    int status = 0;
    const std::string output = RunCommand(
        "lv2_validate '" + BundleDir() + "/manifest.ttl' '" + BundleDir() + "/vocato.ttl'", status);
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("Found 0 errors"), std::string::npos) << output;
    EXPECT_EQ(output.find("warning"), std::string::npos) << output;
}

TEST_F(PluginDescription, LilvFindsThePluginWithItsBinaryAndFeatures) {
    ASSERT_NE(plugin, nullptr);
    EXPECT_TRUE(lilv_plugin_verify(plugin));
    NodePtr name(lilv_plugin_get_name(plugin), &lilv_node_free);
    EXPECT_STREQ(lilv_node_as_string(name.get()), "Vocato");
    const std::string binary = lilv_node_as_uri(lilv_plugin_get_library_uri(plugin));
    EXPECT_NE(binary.find("/vocato.lv2/vocato.so"), std::string::npos) << binary;

    LilvNodes* required = lilv_plugin_get_required_features(plugin);
    ASSERT_EQ(lilv_nodes_size(required), 1u);
    EXPECT_STREQ(lilv_node_as_uri(lilv_nodes_get(required, lilv_nodes_begin(required))),
                 LV2_URID__map);
    lilv_nodes_free(required);
    auto hardRt = Uri(host.World(), LV2_CORE__hardRTCapable);
    LilvNodes* optional = lilv_plugin_get_optional_features(plugin);
    auto schedule = Uri(host.World(), LV2_WORKER__schedule);
    EXPECT_TRUE(lilv_nodes_contains(optional, hardRt.get()));
    EXPECT_TRUE(lilv_nodes_contains(optional, schedule.get()));
    lilv_nodes_free(optional);
    auto worker = Uri(host.World(), LV2_WORKER__interface);
    EXPECT_TRUE(lilv_plugin_has_extension_data(plugin, worker.get()));

    ASSERT_TRUE(lilv_plugin_has_latency(plugin));
    EXPECT_EQ(lilv_plugin_get_latency_port_index(plugin), kLatency);
}

TEST_F(PluginDescription, PortIndicesKindsAndSymbolsMatchThePortEnum) {
    ASSERT_NE(plugin, nullptr);
    ASSERT_EQ(lilv_plugin_get_num_ports(plugin), kPortCount);
    auto input = Uri(host.World(), LV2_CORE__InputPort);
    auto output = Uri(host.World(), LV2_CORE__OutputPort);
    auto audio = Uri(host.World(), LV2_CORE__AudioPort);
    auto control = Uri(host.World(), LV2_CORE__ControlPort);
    auto atom = Uri(host.World(), LV2_ATOM__AtomPort);
    auto midi = Uri(host.World(), LV2_MIDI__MidiEvent);
    auto port = [&](uint32_t i) { return lilv_plugin_get_port_by_index(plugin, i); };
    auto symbol = [&](uint32_t i) {
        return std::string(lilv_node_as_string(lilv_port_get_symbol(plugin, port(i))));
    };

    EXPECT_TRUE(lilv_port_is_a(plugin, port(kAudioIn), audio.get()));
    EXPECT_TRUE(lilv_port_is_a(plugin, port(kAudioIn), input.get()));
    EXPECT_TRUE(lilv_port_is_a(plugin, port(kMidiOut), atom.get()));
    EXPECT_TRUE(lilv_port_is_a(plugin, port(kMidiOut), output.get()));
    EXPECT_TRUE(lilv_port_supports_event(plugin, port(kMidiOut), midi.get()));
    EXPECT_TRUE(lilv_port_is_a(plugin, port(kLatency), control.get()));
    EXPECT_TRUE(lilv_port_is_a(plugin, port(kLatency), output.get()));
    EXPECT_EQ(symbol(kAudioIn), "in");
    EXPECT_EQ(symbol(kMidiOut), "midi_out");
    EXPECT_EQ(symbol(kLatency), "latency");
    for (const ControlPort& c : kControlPorts) {
        SCOPED_TRACE(std::string(c.symbol));
        EXPECT_TRUE(lilv_port_is_a(plugin, port(c.index), control.get()));
        EXPECT_TRUE(lilv_port_is_a(plugin, port(c.index), input.get()));
        EXPECT_EQ(symbol(c.index), c.symbol);
    }
}

TEST_F(PluginDescription, ControlRangesAndDefaultsMatchThePortTable) {
    ASSERT_NE(plugin, nullptr);
    for (const ControlPort& c : kControlPorts) {
        SCOPED_TRACE(std::string(c.symbol));
        LilvNode *def = nullptr, *min = nullptr, *max = nullptr;
        lilv_port_get_range(plugin, lilv_plugin_get_port_by_index(plugin, c.index), &def, &min,
                            &max);
        ASSERT_TRUE(def != nullptr && min != nullptr && max != nullptr);
        EXPECT_EQ(lilv_node_as_float(def), c.defaultValue);
        EXPECT_EQ(lilv_node_as_float(min), c.minimum);
        EXPECT_EQ(lilv_node_as_float(max), c.maximum);
        lilv_node_free(def);
        lilv_node_free(min);
        lilv_node_free(max);
    }
}

std::map<int, std::string> ScalePoints(const LilvPlugin* plugin, PortIndex index) {
    std::map<int, std::string> points;
    LilvScalePoints* all =
        lilv_port_get_scale_points(plugin, lilv_plugin_get_port_by_index(plugin, index));
    LILV_FOREACH(scale_points, i, all) {
        const LilvScalePoint* p = lilv_scale_points_get(all, i);
        points[static_cast<int>(lilv_node_as_float(lilv_scale_point_get_value(p)))] =
            lilv_node_as_string(lilv_scale_point_get_label(p));
    }
    lilv_scale_points_free(all);
    return points;
}

TEST_F(PluginDescription, PresetAndTrackerChoicesCarryTheirLabels) {
    ASSERT_NE(plugin, nullptr);
    std::map<int, std::string> presets;
    for (int32_t i = 0; i < kPresetCount; ++i) {
        presets[i + 1] = std::string(kPresets[static_cast<size_t>(i)].label);
    }
    EXPECT_EQ(ScalePoints(plugin, kPreset), presets);
    EXPECT_EQ(ScalePoints(plugin, kTracker),
              (std::map<int, std::string>{{0, "Classic"}, {1, "Precise"}}));
}

TEST(PortTable, DefaultsAreWhatAFreshNodeHolds) {
    VocatoAddOn addOn(0);
    const FlavorInfo* flavor = nullptr;
    ASSERT_EQ(addOn.GetFlavorAt(0, &flavor), media::kOk);
    NodeOptions options;
    options.internalSynth = false;
    auto node = addOn.InstantiateNodeFor(flavor, std::move(options));
    for (const ControlPort& c : kControlPorts) {
        // The constructor applied preset 1 without recording a request for it.
        if (c.parameter == 0 || c.parameter == PARAM_PRESET) {
            continue;
        }
        SCOPED_TRACE(std::string(c.symbol));
        int64_t lastChange = 0;
        uint8_t value[4];
        size_t size = sizeof value;
        ASSERT_EQ(node->GetParameterValue(c.parameter, &lastChange, value, &size), media::kOk);
        float asFloat = 0.0f;
        if (c.target == PortTarget::IntParameter) {
            int32_t integer = 0;
            std::memcpy(&integer, value, 4);
            asFloat = static_cast<float>(integer);
        } else {
            std::memcpy(&asFloat, value, 4);
        }
        EXPECT_EQ(asFloat, c.defaultValue);
    }
    EXPECT_EQ(ControlPortAt(kMedian).defaultValue, NodeOptions{}.median);
    EXPECT_EQ(ControlPortAt(kConfirm).defaultValue, NodeOptions{}.confirm);
}

} // namespace
} // namespace vocato::lv2::test
