// What feeds the live input, as a control panel: one switch per audio output of the other
// JACK clients, on while that output is connected to the input.
#pragma once

#include "JackClient.h"
#include "ParameterWeb.h"

namespace vocato::media {

class JackInputWeb final : public ParameterWeb {
public:
    // GUI thread. The client must outlive the web. Holds the outputs there are now; outputs
    // that appear later show in the next web made.
    explicit JackInputWeb(JackClient& client);

    // GUI thread.
    bool GetValue(int32_t id, float* value) const override;
    bool SetValue(int32_t id, float value) override;

private:
    JackClient& client_;
};

} // namespace vocato::media
