// What a command asks of the converter node before audio flows: the values a musician sets
// on the command line, and the tracker the node is built with.
#pragma once

#include "PitchTracker.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>

namespace vocato {
class VocatoNode;
}

namespace vocato::app {

struct NodeRequests {
    std::optional<int32_t> preset;
    std::optional<int32_t> program;
    std::optional<float> transpose;
    std::optional<float> bendRange;
    TrackerKind tracker = kDefaultTrackerKind;
};

// --preset, --program, --transpose, --bend-range and --tracker.
void AddNodeRequestOptions(CLI::App& command, NodeRequests& requests);

// Queues the requested values as parameter changes and applies them at once. The caller acts
// as the node's thread: nothing else may be running the node.
void ApplyNodeRequests(VocatoNode& node, const NodeRequests& requests);

} // namespace vocato::app
