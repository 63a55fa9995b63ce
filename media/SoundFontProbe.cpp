#include "SoundFontProbe.h"

#include <sys/stat.h>

namespace vocato::media {

std::vector<std::string> SoundFontProbeList() {
    return {
        "/usr/share/sounds/sf2/FluidR3_GM.sf2",        // fluid-soundfont-gm, 141 MiB
        "/usr/share/sounds/sf3/MuseScore_General.sf3", // musescore-general-soundfont, 38 MiB
        "/usr/share/sounds/sf2/TimGM6mb.sf2",          // timgm6mb-soundfont, 6 MiB
    };
}

std::optional<std::string> FindSoundFont(const std::vector<std::string>& candidates) {
    for (const std::string& path : candidates) {
        struct stat info {};
        if (::lstat(path.c_str(), &info) == 0) {
            return path;
        }
    }
    return std::nullopt;
}

} // namespace vocato::media
