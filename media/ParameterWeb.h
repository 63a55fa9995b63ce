// Our own description of the controls something offers (the converter node, a sound card's
// mixer, the live input's connections): groups of continuous, discrete and switch parameters,
// and access to their values. One generic view draws any web, so every control panel looks
// and behaves alike.
//
// Threads: a web is built and used on one thread that may block (the GUI thread); the values
// behind it may change on other threads, which is why views poll GetValue.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vocato::media {

enum class ParameterKind { Continuous, Discrete, Switch };

struct ParameterItem {
    int32_t value;
    std::string name;
};

struct Parameter {
    int32_t id = 0;
    ParameterKind kind = ParameterKind::Continuous;
    std::string name;
    // Continuous parameters: the range, the unit shown beside the value ("dB", "semitones",
    // may be empty) and the smallest meaningful change (0: any).
    float minimum = 0.0f;
    float maximum = 1.0f;
    float step = 0.0f;
    std::string unit;
    // Discrete parameters: the choices; the value is the chosen item's value.
    std::vector<ParameterItem> items;

    // Adds one choice to a discrete parameter; the shape the menu builders offer choices in.
    void AddItem(int32_t value, const char* itemName) { items.push_back({value, itemName}); }

    static Parameter Continuous(int32_t id, std::string name, float minimum, float maximum,
                                float step, std::string unit);
    static Parameter Discrete(int32_t id, std::string name);
    static Parameter Switch(int32_t id, std::string name);
};

struct ParameterGroup {
    std::string name;
    std::vector<Parameter> parameters;
};

class ParameterWeb {
public:
    virtual ~ParameterWeb() = default;

    const std::vector<ParameterGroup>& Groups() const { return groups_; }
    // The parameter with this id; null when the web has none.
    const Parameter* Find(int32_t id) const;
    size_t ParameterCount() const;

    // Every kind's value is a float: a discrete parameter's item value, a switch's 0 or 1.
    // False when the id is unknown or the value cannot be read now.
    virtual bool GetValue(int32_t id, float* value) const = 0;
    // False when the id is unknown or the change was refused; a change may take effect later
    // (the node applies it on its own thread), so read it back with GetValue.
    virtual bool SetValue(int32_t id, float value) = 0;

protected:
    ParameterGroup& AddGroup(std::string name);

private:
    std::vector<ParameterGroup> groups_;
};

} // namespace vocato::media
