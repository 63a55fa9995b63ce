// The bundle as hosts see it: valid Turtle whose ports agree with the plugin's C++ table, and
// a table whose defaults are the node's own.
#include "TestHost.h"

#include "Fixtures.h"
#include "NodeAccess.h"

#include "Presets.h"

#include <gtest/gtest.h>
#include <lv2/midi/midi.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <tuple>

namespace vocato::lv2::test {
namespace {

TEST(PluginBundle, PassesTheLv2SchemaValidator) {
    const std::string bundle = BundleDir();
    const std::string command =
        "lv2_validate '" + bundle + "/manifest.ttl' '" + bundle + "/vocato.ttl' 2>&1";
    const auto [status, output] = vocato::test::RunCommand(command);
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("Found 0 errors"), std::string::npos) << output;
    EXPECT_EQ(output.find("warning"), std::string::npos) << output;
}

using NodePtr = std::unique_ptr<LilvNode, decltype(&lilv_node_free)>;

std::map<int, std::string> ScalePoints(const LilvPlugin* plugin, const LilvPort* port) {
    std::map<int, std::string> points;
    LilvScalePoints* all = lilv_port_get_scale_points(plugin, port);
    LILV_FOREACH(scale_points, i, all) {
        const LilvScalePoint* p = lilv_scale_points_get(all, i);
        points[static_cast<int>(lilv_node_as_float(lilv_scale_point_get_value(p)))] =
            lilv_node_as_string(lilv_scale_point_get_label(p));
    }
    lilv_scale_points_free(all);
    return points;
}

TEST(PluginBundle, LilvSeesThePluginAsThePortTableDescribesIt) {
    TestHost host;
    const LilvPlugin* plugin = host.Plugin();
    const auto uri = [&](const char* u) {
        return NodePtr(lilv_new_uri(host.World(), u), &lilv_node_free);
    };
    EXPECT_TRUE(lilv_plugin_verify(plugin));
    NodePtr name(lilv_plugin_get_name(plugin), &lilv_node_free);
    EXPECT_STREQ(lilv_node_as_string(name.get()), "Vocato");
    const char* library = lilv_node_as_uri(lilv_plugin_get_library_uri(plugin));
    EXPECT_NE(std::strstr(library, "/vocato.lv2/vocato.so"), nullptr) << library;
    LilvNodes* required = lilv_plugin_get_required_features(plugin);
    EXPECT_EQ(lilv_nodes_size(required), 1u);
    EXPECT_TRUE(lilv_nodes_contains(required, uri(LV2_URID__map).get()));
    lilv_nodes_free(required);
    LilvNodes* optional = lilv_plugin_get_optional_features(plugin);
    EXPECT_TRUE(lilv_nodes_contains(optional, uri(LV2_CORE__hardRTCapable).get()));
    EXPECT_TRUE(lilv_nodes_contains(optional, uri(LV2_WORKER__schedule).get()));
    lilv_nodes_free(optional);
    EXPECT_TRUE(lilv_plugin_has_extension_data(plugin, uri(LV2_WORKER__interface).get()));
    EXPECT_TRUE(lilv_plugin_has_latency(plugin));
    EXPECT_EQ(lilv_plugin_get_latency_port_index(plugin), kLatency);

    ASSERT_EQ(lilv_plugin_get_num_ports(plugin), kPortCount);
    std::vector<std::tuple<uint32_t, std::string_view, const char*, const char*>> ports = {
        {kAudioIn, "in", LV2_CORE__AudioPort, LV2_CORE__InputPort},
        {kMidiOut, "midi_out", LV2_ATOM__AtomPort, LV2_CORE__OutputPort},
        {kLatency, "latency", LV2_CORE__ControlPort, LV2_CORE__OutputPort}};
    for (const ControlPort& c : kControlPorts) {
        ports.emplace_back(c.index, c.symbol, LV2_CORE__ControlPort, LV2_CORE__InputPort);
    }
    for (const auto& [index, symbol, kind, direction] : ports) {
        SCOPED_TRACE(std::string(symbol));
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, index);
        EXPECT_EQ(std::string_view(lilv_node_as_string(lilv_port_get_symbol(plugin, port))), symbol);
        EXPECT_TRUE(lilv_port_is_a(plugin, port, uri(kind).get()));
        EXPECT_TRUE(lilv_port_is_a(plugin, port, uri(direction).get()));
    }
    EXPECT_TRUE(lilv_port_supports_event(plugin, lilv_plugin_get_port_by_index(plugin, kMidiOut),
                                         uri(LV2_MIDI__MidiEvent).get()));
    for (const ControlPort& c : kControlPorts) {
        SCOPED_TRACE(std::string(c.symbol));
        LilvNode *def = nullptr, *min = nullptr, *max = nullptr;
        lilv_port_get_range(plugin, lilv_plugin_get_port_by_index(plugin, c.index), &def, &min, &max);
        const NodePtr owned[] = {{def, &lilv_node_free}, {min, &lilv_node_free}, {max, &lilv_node_free}};
        ASSERT_TRUE(def != nullptr && min != nullptr && max != nullptr);
        EXPECT_EQ(lilv_node_as_float(def), c.defaultValue);
        EXPECT_EQ(lilv_node_as_float(min), c.minimum);
        EXPECT_EQ(lilv_node_as_float(max), c.maximum);
    }
    std::map<int, std::string> presets;
    for (int32_t i = 0; i < kPresetCount; ++i) {
        presets[i + 1] = std::string(kPresets[static_cast<size_t>(i)].label);
    }
    EXPECT_EQ(ScalePoints(plugin, lilv_plugin_get_port_by_index(plugin, kPreset)), presets);
    EXPECT_EQ(ScalePoints(plugin, lilv_plugin_get_port_by_index(plugin, kTracker)),
              (std::map<int, std::string>{{0, "Classic"}, {1, "Precise"}}));
}

TEST(PortTable, DefaultsAreWhatAFreshNodeHolds) {
    auto node = MakeNode();
    for (const ControlPort& c : kControlPorts) {
        // The constructor applied preset 1 without recording a request for it.
        if (c.parameter == 0 || c.parameter == PARAM_PRESET) {
            continue;
        }
        EXPECT_EQ(vocato::test::ParameterValue(*node, c.parameter), c.defaultValue) << c.symbol;
    }
    EXPECT_EQ(ControlPortAt(kMedian).defaultValue, NodeOptions{}.median);
    EXPECT_EQ(ControlPortAt(kConfirm).defaultValue, NodeOptions{}.confirm);
}

} // namespace
} // namespace vocato::lv2::test
