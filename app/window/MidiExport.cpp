#include "MidiExport.h"

#include "Diagnostics.h"

namespace vocato {

media::ExportResult ExportRecording(const media::MidiStore& store, const std::string& directory,
                                    const std::string& name) {
    const std::string path = directory + "/" + name;
    media::Diagnostic("Fichier %s\n", path.c_str());
    media::ExportResult result = media::ExportStandardMidiFile(store, path);
    if (result.ok) {
        media::Diagnostic("Midi Write Ok\n");
        media::Diagnostic("MidiFile numbers events %zu\n", store.CountEvents());
    } else {
        media::Diagnostic("ERROR on Midi Write\n");
    }
    return result;
}

} // namespace vocato
