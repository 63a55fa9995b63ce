// The control input ports as last pushed to the node. The node hears of a port only when its
// value changes, through the same parameter events the window and the converter use.
#pragma once

#include "PluginPorts.h"
#include "VocatoNode.h"

#include <array>

namespace vocato::lv2 {

class ControlCache {
public:
    // Every port taken to be at its default, which is what a freshly made node holds.
    ControlCache() noexcept { Forget(); }

    // Any thread that does not race run(). `data` is the host's port buffer, or null.
    void Connect(PortIndex index, const float* data) noexcept;

    // Not the audio thread. For a node just made: every port not at its default is pushed
    // by the next Push.
    void Forget() noexcept;

    // Audio thread. Queues the changed parameters, due at `when`, the preset first since it
    // rewrites the others; applies the median and confirm switches at once. True when a
    // preset was requested: it will use up one of the node's spare trackers.
    bool Push(VocatoNode& node, int64_t when) noexcept;

    // Any thread that does not race run(). The port's value, held inside its range; its
    // default when the port is not connected or holds NaN.
    float Value(PortIndex index) const noexcept;

private:
    static size_t Slot(PortIndex index) noexcept { return index - kFirstControl; }

    std::array<const float*, kControlCount> ports_{};
    std::array<float, kControlCount> pushed_{};
};

} // namespace vocato::lv2
