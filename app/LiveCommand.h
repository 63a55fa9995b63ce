// `vocato live [...]`: live input (or a sound file played in real time) to the MIDI ports and
// the synthesizer, without a window, until Ctrl-C or SIGTERM.
#pragma once

#include "LiveSession.h"

#include <CLI/CLI.hpp>

namespace vocato::app {

struct LiveOptions {
    LiveSettings settings;
    bool noSynth = false;
    bool quiet = false;
};

// Adds the subcommand to `app`; its values land in `options`.
CLI::App* AddLiveCommand(CLI::App& app, LiveOptions& options);

// The process exit status: 0 after a clean stop, 1 when there is nothing to play.
int RunLive(const LiveOptions& options);

} // namespace vocato::app
