// The export of the window's recording through the save panel's choice.
#pragma once

#include "MidiStore.h"
#include "StandardMidiFile.h"

#include <string>

namespace vocato {

// Not the audio thread. Writes `store` as a Standard MIDI File (format 0) at
// `directory`/`name`, atomically, and reports on standard output as the window always has.
media::ExportResult ExportRecording(const media::MidiStore& store, const std::string& directory,
                                    const std::string& name);

} // namespace vocato
