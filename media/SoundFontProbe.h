// The General MIDI SoundFonts the internal synthesizer looks for, largest (best) first.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vocato::media {

std::vector<std::string> SoundFontProbeList();

// The first entry that exists, without following a link at that path; nullopt when none does.
std::optional<std::string> FindSoundFont(const std::vector<std::string>& candidates);

} // namespace vocato::media
