// The "node=N" role: the control panel of ALSA card N, its mixer drawn by the generic view.
// A card that cannot be found, described or that has no controls is reported with the
// alert, and the role then has no window.
//
// GUI thread only.
#pragma once

#include "Alert.h"
#include "AlsaMixerWeb.h"
#include "PanelWindow.h"

#include <QPointer>

namespace vocato {

class MediaNodeControlApp {
public:
    // Opens the card's mixer; a failure goes to `alert`.
    MediaNodeControlApp(long node, media::Alert& alert);

    bool Opened() const { return mixer_.web != nullptr; }
    // "Mixer(3) controls" for a card named Mixer with number 3.
    QString Title() const;
    // Needs a QApplication. Shows the panel window, which quits the application when closed;
    // null when the mixer did not open.
    PanelWindow* Show();

private:
    long node_;
    media::MixerWebResult mixer_;
};

} // namespace vocato
