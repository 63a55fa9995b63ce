#include "JackInputWeb.h"

#include <algorithm>

namespace vocato::media {

JackInputWeb::JackInputWeb(JackClient& client) : client_(client) {
    ParameterGroup& group = AddGroup(client.InputPortName());
    int32_t id = 0;
    for (std::string& source : client.InputSources()) {
        group.parameters.push_back(Parameter::Switch(++id, std::move(source)));
    }
}

bool JackInputWeb::GetValue(int32_t id, float* value) const {
    const Parameter* parameter = Find(id);
    if (parameter == nullptr || client_.Lost()) {
        return false;
    }
    const std::vector<std::string> connected = client_.InputConnections();
    const bool on =
        std::find(connected.begin(), connected.end(), parameter->name) != connected.end();
    *value = on ? 1.0f : 0.0f;
    return true;
}

bool JackInputWeb::SetValue(int32_t id, float value) {
    const Parameter* parameter = Find(id);
    if (parameter == nullptr) {
        return false;
    }
    return value >= 0.5f ? client_.ConnectInput(parameter->name)
                         : client_.DisconnectInput(parameter->name);
}

} // namespace vocato::media
