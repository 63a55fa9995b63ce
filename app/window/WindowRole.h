// The executable's window role: no arguments, sound files, or "node=<id>" for the control
// panel of a node.
#pragma once

namespace vocato {

// Runs the window role to its end; the settings are loaded before and saved after.
int RunWindowRole(int argc, char** argv);

} // namespace vocato
