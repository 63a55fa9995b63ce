#pragma once

#include "Message.h"

namespace vocato {

// Whatever receives the messages of menu items and buttons: the main window,
// the preferences window. Called on the GUI thread.
class Handler {
public:
    virtual ~Handler() = default;
    virtual void MessageReceived(const Message& message) = 0;
};

} // namespace vocato
