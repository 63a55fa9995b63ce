// An ALSA sound card's mixer as a control panel, and which card the live input records from.
#pragma once

#include "ParameterWeb.h"

#include <memory>
#include <string>

namespace vocato::media {

struct MixerWebResult {
    enum class Failure {
        None,
        NoCard,       // the card cannot be found or opened
        NoInfo,       // the card's name and description cannot be read
        NoParameters, // the card has no mixer controls
    };
    std::unique_ptr<ParameterWeb> web; // null unless failure is None
    Failure failure = Failure::None;
    int card = -1;
    int status = 0;         // alsa-lib's error code (negative errno) when it failed
    std::string statusText; // alsa-lib's words for it
    std::string cardName;   // once the card's information was read
};

// GUI thread. Opens the mixer of ALSA card `card` (hw:card); the web keeps it open.
MixerWebResult OpenAlsaMixerWeb(int card);

// Any thread that may block. The sound card behind an ALSA capture device ("default"), or
// -1 when there is none: no such device, a sound server's plugin, or a card another program
// holds without sharing.
int AlsaCardOfCaptureDevice(const std::string& device);

} // namespace vocato::media
