// A sound card's mixer as a control panel: one group per element holding its playback and
// capture volumes (in dB when the card knows its scale) and switches, or its choice of items.
#pragma once

#include "MixerElement.h"
#include "ParameterWeb.h"

#include <memory>
#include <vector>

namespace vocato::media {

class MixerWeb final : public ParameterWeb {
public:
    // GUI thread. Elements with nothing to control get no group.
    explicit MixerWeb(std::vector<std::unique_ptr<MixerElement>> elements);

    // GUI thread. A value is read from the element's first channel and written to all of
    // them; volumes outside their range are brought into it.
    bool GetValue(int32_t id, float* value) const override;
    bool SetValue(int32_t id, float value) override;

private:
    struct Binding {
        MixerElement* element;
        MixerControl control;
    };
    void AddElement(MixerElement& element);
    void AddSwitch(MixerElement& element, MixerControl control, const char* name,
                   std::vector<Parameter>& parameters);
    void AddVolume(MixerElement& element, MixerControl raw, MixerControl decibels, const char* name,
                   std::vector<Parameter>& parameters);
    const Binding* Bound(int32_t id) const;

    std::vector<std::unique_ptr<MixerElement>> elements_;
    std::vector<Binding> bindings_; // parameter id - 1
};

} // namespace vocato::media
