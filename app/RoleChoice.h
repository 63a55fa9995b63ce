// Which role the executable's arguments ask for, told without loading any of the libraries a
// role needs.
#pragma once

#include <cstring>

namespace vocato {

// "node=<id>": the control panel of a node.
inline bool IsControlPanelArgument(const char* arg) { return std::strncmp(arg, "node=", 5) == 0; }

// True when the arguments ask for a window rather than a headless command: none at all, the
// control panel, or sound files to open.
bool IsWindowRole(int argc, char** argv);

} // namespace vocato
