#include "MediaNodeControlApp.h"

#include <QApplication>

#include <cstdio>
#include <string>

namespace vocato {

namespace {

const char* FailureFormat(media::MixerWebResult::Failure failure) {
    switch (failure) {
    case media::MixerWebResult::Failure::NoCard:
        return "MediaNodeControlApp: couldn't find node (%ld):\n%s\n";
    case media::MixerWebResult::Failure::NoInfo:
        return "MediaNodeControlApp: couldn't get node info (%ld):\n%s\n";
    case media::MixerWebResult::Failure::NoParameters:
    case media::MixerWebResult::Failure::None:
        break;
    }
    return "MediaNodeControlApp: no parameters for node (%ld):\n%s\n";
}

} // namespace

MediaNodeControlApp::MediaNodeControlApp(long node, media::Alert& alert)
    : node_(node), mixer_(media::OpenAlsaMixerWeb(static_cast<int>(node))) {
    if (mixer_.web == nullptr) {
        char text[512];
        std::snprintf(text, sizeof text, FailureFormat(mixer_.failure), node,
                      mixer_.statusText.c_str());
        alert.Show("error", text);
    }
}

QString MediaNodeControlApp::Title() const {
    return QStringLiteral("%1(%2) controls")
        .arg(QString::fromStdString(mixer_.cardName))
        .arg(node_);
}

PanelWindow* MediaNodeControlApp::Show() {
    if (mixer_.web == nullptr) {
        return nullptr;
    }
    auto* window = new PanelWindow(std::move(mixer_.web), Title());
    QObject::connect(window, &QObject::destroyed, qApp, &QApplication::quit);
    return window;
}

} // namespace vocato
