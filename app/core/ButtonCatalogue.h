#pragma once

#include "Message.h"

#include <array>
#include <string>

namespace vocato {

// How a picture button reacts to clicks: a one-state button sends its message
// on release; a two-state button also toggles between its on and off faces.
enum class ButtonBehaviour : int32_t { OneState = 0, TwoState = 1 };

struct ButtonDescription {
    int32_t id;               // resource ID
    const char* resourceName; // name the main view asks for
    const char* viewName;
    Rect frame;    // inclusive: (0, 0) - (34, 24) is 35 x 25 pixels
    uint32_t what; // the message the button sends
    ButtonBehaviour behaviour;
    const char* fontFamily;
    const char* fontStyle;
    int32_t designId;
};

// The eight buttons of the front panel, in resource ID order.
extern const std::array<ButtonDescription, 8> kButtonCatalogue;

// The four faces of a button, in archive order: enabled on, enabled off,
// disabled on, disabled off.
inline constexpr std::array<const char*, 4> kButtonFaceFields = {"_e_on", "_e_off", "_d_on",
                                                                 "_d_off"};

// ":/vocato/buttons/RecMidi_e_on.png" for ("RecMidi", "_e_on").
std::string ButtonFacePath(const char* resourceName, const char* faceField);

// The archive the main view rebuilds a picture button from: "class", "_name",
// "_frame", "_msg", "_behave", the four faces (each a picture archive whose
// "_image" names the face's image resource) and the other fields of the form.
Message ButtonArchive(const ButtonDescription& button);

} // namespace vocato
