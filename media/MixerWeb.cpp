#include "MixerWeb.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace vocato::media {
namespace {

constexpr float kDecibelUnit = 100.0f; // ALSA counts hundredths of a dB

bool IsDecibels(MixerControl control) {
    return control == MixerControl::PlaybackDecibels || control == MixerControl::CaptureDecibels;
}

} // namespace

MixerWeb::MixerWeb(std::vector<std::unique_ptr<MixerElement>> elements)
    : elements_(std::move(elements)) {
    for (const auto& element : elements_) {
        AddElement(*element);
    }
}

void MixerWeb::AddElement(MixerElement& element) {
    std::vector<Parameter> parameters;
    AddVolume(element, MixerControl::PlaybackVolume, MixerControl::PlaybackDecibels,
              "Playback volume", parameters);
    AddSwitch(element, MixerControl::PlaybackSwitch, "Playback switch", parameters);
    AddVolume(element, MixerControl::CaptureVolume, MixerControl::CaptureDecibels, "Capture volume",
              parameters);
    AddSwitch(element, MixerControl::CaptureSwitch, "Capture switch", parameters);
    const std::vector<std::string> items = element.Items();
    if (element.Has(MixerControl::Item) && !items.empty()) {
        bindings_.push_back({&element, MixerControl::Item});
        Parameter choice =
            Parameter::Discrete(static_cast<int32_t>(bindings_.size()), element.Name());
        for (size_t i = 0; i < items.size(); ++i) {
            choice.AddItem(static_cast<int32_t>(i), items[i].c_str());
        }
        parameters.push_back(std::move(choice));
    }
    if (parameters.empty()) {
        return;
    }
    // Cards repeat a name for controls of the same kind ("Capture", "Capture 1").
    std::string name = element.Name();
    if (element.Index() > 0) {
        name += " " + std::to_string(element.Index());
    }
    AddGroup(std::move(name)).parameters = std::move(parameters);
}

void MixerWeb::AddSwitch(MixerElement& element, MixerControl control, const char* name,
                         std::vector<Parameter>& parameters) {
    if (element.Has(control)) {
        bindings_.push_back({&element, control});
        parameters.push_back(Parameter::Switch(static_cast<int32_t>(bindings_.size()), name));
    }
}

void MixerWeb::AddVolume(MixerElement& element, MixerControl raw, MixerControl decibels,
                         const char* name, std::vector<Parameter>& parameters) {
    long minimum = 0;
    long maximum = 0;
    const auto id = static_cast<int32_t>(bindings_.size() + 1);
    if (element.Has(decibels) && element.Range(decibels, &minimum, &maximum) && minimum < maximum) {
        bindings_.push_back({&element, decibels});
        // Steps in dB need not be even; the card picks the one it has.
        parameters.push_back(Parameter::Continuous(id, name, minimum / kDecibelUnit,
                                                   maximum / kDecibelUnit, 0.0f, "dB"));
    } else if (element.Has(raw) && element.Range(raw, &minimum, &maximum) && minimum < maximum) {
        bindings_.push_back({&element, raw});
        parameters.push_back(Parameter::Continuous(id, name, static_cast<float>(minimum),
                                                   static_cast<float>(maximum), 1.0f, ""));
    }
}

const MixerWeb::Binding* MixerWeb::Bound(int32_t id) const {
    if (id < 1 || static_cast<size_t>(id) > bindings_.size()) {
        return nullptr;
    }
    return &bindings_[static_cast<size_t>(id) - 1];
}

bool MixerWeb::GetValue(int32_t id, float* value) const {
    const Binding* binding = Bound(id);
    long raw = 0;
    if (binding == nullptr || !binding->element->Get(binding->control, 0, &raw)) {
        return false;
    }
    const Parameter& parameter = *Find(id);
    switch (parameter.kind) {
    case ParameterKind::Continuous: {
        // A muted dB scale reads as minus infinity; the slider sits at its bottom.
        const float v = IsDecibels(binding->control) ? raw / kDecibelUnit : static_cast<float>(raw);
        *value = std::clamp(v, parameter.minimum, parameter.maximum);
        return true;
    }
    case ParameterKind::Switch:
        *value = raw != 0 ? 1.0f : 0.0f;
        return true;
    case ParameterKind::Discrete:
        *value = static_cast<float>(raw);
        return true;
    }
    return false;
}

bool MixerWeb::SetValue(int32_t id, float value) {
    const Binding* binding = Bound(id);
    if (binding == nullptr || !std::isfinite(value)) {
        return false;
    }
    const Parameter& parameter = *Find(id);
    long raw = 0;
    switch (parameter.kind) {
    case ParameterKind::Continuous: {
        const float v = std::clamp(value, parameter.minimum, parameter.maximum);
        raw = std::lround(IsDecibels(binding->control) ? v * kDecibelUnit : v);
        break;
    }
    case ParameterKind::Switch:
        raw = value >= 0.5f ? 1 : 0;
        break;
    case ParameterKind::Discrete:
        raw = std::lround(value);
        if (raw < 0 || static_cast<size_t>(raw) >= parameter.items.size()) {
            return false;
        }
        break;
    }
    const int channels = std::max(1, binding->element->Channels(binding->control));
    bool all = true;
    for (int channel = 0; channel < channels; ++channel) {
        all = binding->element->Set(binding->control, channel, raw) && all;
    }
    return all;
}

} // namespace vocato::media
