#pragma once

#include "Handler.h"

class QMenuBar;

namespace vocato {

// Fills the window's menu bar: "File" (About, Open Wave, Export midifile, Quit) and
// "Options" (Parameters); each item sends its message to `target`. GUI thread.
void AddMainMenu(QMenuBar* bar, Handler* target);

} // namespace vocato
