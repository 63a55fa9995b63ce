// The application object of the window role: the splash, the main window, the export that
// the save panel asks for, and the sound files given on the command line.
#pragma once

#include "Handler.h"
#include "NodeHarnessWin.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

namespace vocato {

class NodeHarnessApp final : public QObject, public Handler {
    Q_OBJECT
public:
    // GUI thread. Binds the linked resources.
    NodeHarnessApp();
    // Destroys the main window if it is still there, so that it writes its settings.
    ~NodeHarnessApp() override;

    // Shows the splash, builds the main window, then lets the splash go.
    void ReadyToRun(WindowOptions options = {});
    // The save panel's request, and whatever the window does not handle itself.
    void MessageReceived(const Message& message) override;
    // Sound files opened from outside the window; ignored until the window exists.
    void RefsReceived(const QStringList& paths);

    NodeHarnessWin* Window() const { return window_; }

private:
    ResourceArtwork artwork_;
    QPointer<NodeHarnessWin> window_;
};

} // namespace vocato
