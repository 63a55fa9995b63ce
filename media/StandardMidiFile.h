// Export of a MIDI store as a Standard MIDI File, format 0 (one track).
//
// The division is 500 ticks per quarter note and the tempo 500000 microseconds per quarter
// (120 beats per minute, the file's default), so one tick is exactly one millisecond and the
// store's stamps become delta times without rounding.
#pragma once

#include "MidiStore.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vocato::media {

inline constexpr uint16_t kSmfTicksPerQuarter = 500;
inline constexpr uint32_t kSmfMicrosPerQuarter = 500000;

// The whole file: header chunk, then one track with the tempo, the events in stamp order and
// the end of track.
std::vector<uint8_t> EncodeStandardMidiFile(const MidiStore& store);

struct ExportResult {
    bool ok = false;
    std::string error; // one sentence for the user when !ok
};

// Not the audio thread. Writes a temporary file beside `path`, flushes it to disk and renames
// it over `path`: a reader sees the old file or the new one, never a part. On failure the
// temporary file is removed and a file already at `path` is left as it was.
ExportResult ExportStandardMidiFile(const MidiStore& store, const std::string& path);

} // namespace vocato::media
