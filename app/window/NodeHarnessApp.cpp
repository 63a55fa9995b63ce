#include "NodeHarnessApp.h"

#include "AboutWin.h"
#include "MidiExport.h"
#include "WindowMessages.h"

#include "Diagnostics.h"

#include <QApplication>
#include <QMessageBox>

namespace vocato {

NodeHarnessApp::NodeHarnessApp() = default;

NodeHarnessApp::~NodeHarnessApp() { delete window_.data(); }

void NodeHarnessApp::ReadyToRun(WindowOptions options) {
    auto* splash = new ui::AboutWin(artwork_, true);
    // The splash must be on screen while the audio system opens.
    QApplication::processEvents();
    window_ = new NodeHarnessWin(QPoint(100, 200), QStringLiteral("Vocato"), this,
                                 std::move(options));
    splash->close();
}

void NodeHarnessApp::MessageReceived(const Message& message) {
    media::Diagnostic("App Message %u\n", message.what);
    if (message.what == kQuitRequested) {
        QApplication::quit();
        return;
    }
    if (message.what != kSaveRequested || window_.isNull() || window_->MidiStore() == nullptr) {
        return;
    }
    std::string directory, name;
    message.FindString("directory", &directory);
    message.FindString("name", &name);
    const media::ExportResult result = ExportRecording(*window_->MidiStore(), directory, name);
    if (!result.ok) {
        auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Export midifile"),
                                    QString::fromStdString(result.error), QMessageBox::Ok,
                                    window_);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->show();
    }
}

void NodeHarnessApp::RefsReceived(const QStringList& paths) {
    if (!window_.isNull()) {
        window_->RefsReceived(paths);
    }
}

} // namespace vocato
