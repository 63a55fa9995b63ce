#include "ControlCache.h"

#include <algorithm>
#include <cmath>

namespace vocato::lv2 {

void ControlCache::Connect(PortIndex index, const float* data) noexcept {
    ports_[Slot(index)] = data;
}

void ControlCache::Forget() noexcept {
    for (const ControlPort& port : kControlPorts) {
        pushed_[Slot(port.index)] = port.defaultValue;
    }
}

float ControlCache::Value(PortIndex index) const noexcept {
    const ControlPort& port = ControlPortAt(index);
    const float* data = ports_[Slot(index)];
    if (data == nullptr || std::isnan(*data)) {
        return port.defaultValue;
    }
    return std::clamp(*data, port.minimum, port.maximum);
}

bool ControlCache::Push(VocatoNode& node, int64_t when) noexcept {
    bool switchesChanged = false;
    bool presetRequested = false;
    // kControlPorts lists the preset first.
    for (const ControlPort& port : kControlPorts) {
        const float value = Value(port.index);
        float& pushed = pushed_[Slot(port.index)];
        if (value == pushed) {
            continue;
        }
        pushed = value;
        switch (port.target) {
        case PortTarget::FloatParameter:
            node.SetParameterValue(port.parameter, when, &value, sizeof value);
            break;
        case PortTarget::IntParameter: {
            const auto integer = static_cast<int32_t>(std::lround(value));
            node.SetParameterValue(port.parameter, when, &integer, sizeof integer);
            presetRequested |= port.parameter == PARAM_PRESET;
            break;
        }
        case PortTarget::EngineSwitch:
            switchesChanged = true;
            break;
        case PortTarget::Tracker:
            break; // taken when the node is made (VocatoPlugin::Activate)
        }
    }
    if (switchesChanged) {
        node.SetEngineSwitches(Value(kMedian) >= 0.5f ? 1 : 0, Value(kConfirm) >= 0.5f ? 1 : 0);
    }
    return presetRequested;
}

} // namespace vocato::lv2
