// The executable's window role: no arguments, sound files, or "node=<id>" for the control
// panel of a node.
#pragma once

namespace vocato {

// True when the arguments ask for a window rather than a headless command.
bool IsWindowRole(int argc, char** argv);

// Runs the window role to its end; the settings are loaded before and saved after.
int RunWindowRole(int argc, char** argv);

} // namespace vocato
