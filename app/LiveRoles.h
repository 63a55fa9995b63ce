// The window needs Qt and the twenty-odd libraries Qt brings, which `vocato convert` never
// uses; loading them took a tenth of the time a conversion takes. So the window, and
// `vocato live` with it (the live session's code serves both), lives in a module beside the
// executable, which opens it only when one of the two runs.
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
