// The --tracker option that every command converting audio offers.
#pragma once

#include "PitchTracker.h"

#include <CLI/CLI.hpp>

namespace vocato::app {

// `--tracker classic|precise`, defaulting to what `kind` holds.
void AddTrackerOption(CLI::App& command, TrackerKind& kind);

} // namespace vocato::app
