#include "ParameterWeb.h"

#include <utility>

namespace vocato::media {

namespace {

Parameter Named(int32_t id, ParameterKind kind, std::string name) {
    Parameter parameter;
    parameter.id = id;
    parameter.kind = kind;
    parameter.name = std::move(name);
    return parameter;
}

} // namespace

Parameter Parameter::Continuous(int32_t id, std::string name, float minimum, float maximum,
                                float step, std::string unit) {
    Parameter parameter = Named(id, ParameterKind::Continuous, std::move(name));
    parameter.minimum = minimum;
    parameter.maximum = maximum;
    parameter.step = step;
    parameter.unit = std::move(unit);
    return parameter;
}

Parameter Parameter::Discrete(int32_t id, std::string name) {
    return Named(id, ParameterKind::Discrete, std::move(name));
}

Parameter Parameter::Switch(int32_t id, std::string name) {
    Parameter parameter = Named(id, ParameterKind::Switch, std::move(name));
    parameter.maximum = 1.0f;
    parameter.step = 1.0f;
    return parameter;
}

const Parameter* ParameterWeb::Find(int32_t id) const {
    for (const ParameterGroup& group : groups_) {
        for (const Parameter& parameter : group.parameters) {
            if (parameter.id == id) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

size_t ParameterWeb::ParameterCount() const {
    size_t count = 0;
    for (const ParameterGroup& group : groups_) {
        count += group.parameters.size();
    }
    return count;
}

ParameterGroup& ParameterWeb::AddGroup(std::string name) {
    groups_.push_back({std::move(name), {}});
    return groups_.back();
}

} // namespace vocato::media
