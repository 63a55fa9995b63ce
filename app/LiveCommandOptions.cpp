#include "LiveCommand.h"

namespace vocato::app {

CLI::App* AddLiveCommand(CLI::App& app, LiveOptions& o) {
    CLI::App* cmd = app.add_subcommand(
        "live", "Live input (or a sound file in real time) to the MIDI ports and the synthesizer");
    LiveSettings& s = o.settings;
    AddNodeRequestOptions(*cmd, s);
    cmd->add_flag("--no-synth", o.noSynth, "Do not play the internal synthesizer");
    cmd->add_option("--midi-port", s.midiPort,
                    "Connect the MIDI output to this JACK port or ALSA sequencer port");
    cmd->add_option("--file", s.file, "Play this sound file in real time instead of the input");
    cmd->add_flag("-v,--verbose", s.verbose, "Print the notes as they are played");
    cmd->add_flag("-q,--quiet", o.quiet, "Print nothing but errors");
    return cmd;
}

} // namespace vocato::app
