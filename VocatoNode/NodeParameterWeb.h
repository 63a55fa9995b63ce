// The converter node's sixteen parameters as a control panel: the tracking thresholds, the
// levels, and the musical settings (preset, note range, transposition, bend range, program).
// Ranges are those the tracker accepts, so a control cannot ask for a value it would refuse.
//
// Threads: the GUI thread. Values go to the node as timed parameter events and are applied
// on the node's thread; reading them back shows what the node really holds.
#pragma once

#include "ParameterWeb.h"

namespace vocato {

class VocatoNode;

class NodeParameterWeb final : public media::ParameterWeb {
public:
    // `node` outlives the web.
    explicit NodeParameterWeb(VocatoNode& node);

    bool GetValue(int32_t id, float* value) const override;
    // Queued for the node's next millisecond, as the front panel's own changes are.
    bool SetValue(int32_t id, float value) override;

private:
    VocatoNode& node_;
};

} // namespace vocato
