// Starting a MIDI recording of what the node sends, as the window and the converter do.
#pragma once

#include "VocatoNode.h"

#include <cstddef>

namespace vocato {

// The events the recording holds before anything is recorded.
inline constexpr size_t kOpeningEvents = 6;

// Not the node thread. Replaces the window's recording with a new store of `capacity` events
// whose time 0 is the node's MIDI clock now, opening with program, bend range (registered
// parameter 0/0) and full expression on the node's channel, and switches recording on.
// False when the store cannot be allocated (then there is no recording).
bool ConnectMidiStore(VocatoNode& node, media::DisplaySink& window, size_t capacity);

} // namespace vocato
