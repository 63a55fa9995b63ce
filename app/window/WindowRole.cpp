#include "WindowRole.h"

#include "MediaNodeControlApp.h"
#include "NodeHarnessApp.h"
#include "Preferences.h"
#include "RoleChoice.h"
#include "WindowAlert.h"

#include <QApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>

namespace vocato {

namespace {

// Qt aborts when it cannot reach a display; say what works without one instead.
bool HasDisplay() {
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') {
            return true;
        }
    }
    return false;
}

int NoDisplay() {
    std::fputs("vocato: no display to open the window on (neither DISPLAY nor WAYLAND_DISPLAY "
               "is set).\n"
               "Without a display, run one of:\n"
               "  vocato live                   sing into the live input; MIDI goes to the "
               "synthesizer and the MIDI ports\n"
               "  vocato convert IN -o OUT.mid  convert a sound file to a Standard MIDI File\n"
               "or set QT_QPA_PLATFORM=offscreen to run the window without showing it.\n",
               stderr);
    return 1;
}

// The control panel of a card: its failures are told on the terminal without a display, in
// an alert with one.
int ControlPanel(int argc, char** argv) {
    const long node = std::strtol(argv[1] + 5, nullptr, 10);
    if (!HasDisplay()) {
        media::StderrAlert alert;
        MediaNodeControlApp panel(node, alert);
        if (panel.Opened()) {
            std::fprintf(stderr, "vocato: no display to show %s on.\n",
                         panel.Title().toLocal8Bit().constData());
        }
        return 1;
    }
    QApplication application(argc, argv);
    WindowAlert alert;
    MediaNodeControlApp panel(node, alert);
    // After a failure only the alert is open: closing it ends the role.
    const bool opened = panel.Show() != nullptr;
    const int status = application.exec();
    return opened ? status : 1;
}

// SIGINT and SIGTERM close the window like its close box, so the settings are saved: the
// handler only writes to a pipe, and the GUI thread does the rest.
int signalPipe[2] = {-1, -1};

void OnSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

void CloseOnSignals(NodeHarnessApp& app, QObject* owner) {
    if (::pipe(signalPipe) != 0) {
        return;
    }
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, owner);
    QObject::connect(notifier, &QSocketNotifier::activated, owner, [&app] {
        char byte;
        [[maybe_unused]] const ssize_t got = ::read(signalPipe[0], &byte, 1);
        if (app.Window() != nullptr) {
            app.Window()->close();
        } else {
            QApplication::quit();
        }
    });
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

} // namespace

int RunWindowRole(int argc, char** argv) {
    if (argc >= 2 && IsControlPanelArgument(argv[1])) {
        return ControlPanel(argc, argv);
    }
    if (!HasDisplay()) {
        return NoDisplay();
    }
    prefs = new TPreferences("Vocato");
    int status = 0;
    {
        QApplication application(argc, argv);
        application.setQuitOnLastWindowClosed(false);
        NodeHarnessApp app;
        CloseOnSignals(app, &application);
        app.ReadyToRun();
        QStringList files;
        for (int i = 1; i < argc; ++i) {
            files << QString::fromLocal8Bit(argv[i]);
        }
        app.RefsReceived(files);
        status = application.exec();
    }
    delete prefs;
    prefs = nullptr;
    return status;
}

} // namespace vocato
