// The window and `vocato live` need Qt, JACK, ALSA and FluidSynth, some eighty libraries in
// all, and `vocato convert` needs none of them. Loading them took a fifth of the time a
// conversion takes, so these two roles live in a module beside the executable, which opens it
// only when one of them runs.
#pragma once

#include "LiveCommand.h"

namespace vocato {

inline constexpr char kLiveRolesModule[] = "vocato-live-roles.so";

// The module's entry points, looked up by these names.
using WindowRoleEntry = int(int argc, char** argv);
using LiveCommandEntry = int(const app::LiveOptions* options);
inline constexpr char kWindowRoleEntry[] = "vocato_run_window_role";
inline constexpr char kLiveCommandEntry[] = "vocato_run_live_command";

// Each runs its role from the module, or returns 1 with one message on standard error when
// the module cannot be opened.
int RunWindowRoleFromModule(int argc, char** argv);
int RunLiveFromModule(const app::LiveOptions& options);

} // namespace vocato
