#include "WindowFixture.h"

#include <cstdio>

namespace vocato::test {

QAction* FindItem(QMenu* menu, const QString& text) {
    for (QAction* action : menu->actions()) {
        if (action->menu() != nullptr) {
            if (QAction* found = FindItem(action->menu(), text)) {
                return found;
            }
        } else if (action->text() == text) {
            return action;
        }
    }
    return nullptr;
}

void WindowTest::SetUp() {
    std::remove((SettingsDirectory() + "/Vocato").c_str());
    prefs = new TPreferences("Vocato");
    app_ = std::make_unique<NodeHarnessApp>();
    app_->ReadyToRun(Options());
    ASSERT_NE(app_->Window(), nullptr);
    skin_ = ResourceArtwork().Image("skin");
    Wait(100);
}

WindowOptions WindowTest::Options() const {
    WindowOptions options;
    options.audio.jack = false;
    options.audio.alsa = false;
    options.audio.synth = false;
    options.sequencer = false;
    return options;
}

void JackWindowTest::SetUp() {
    ASSERT_TRUE(server_.Ready()) << "jackd -d dummy did not start";
    WindowTest::SetUp();
}

WindowOptions JackWindowTest::Options() const {
    WindowOptions options = WindowTest::Options();
    options.audio.jack = true;
    options.audio.jackServer = server_.Name();
    return options;
}

void WindowTest::TearDown() {
    // A set-up that stopped early (no JACK server) made no application.
    if (app_ != nullptr) {
        delete app_->Window();
    }
    app_.reset();
    delete prefs;
    prefs = nullptr;
}

void WindowTest::SaveScreenshot(QWidget& widget, const char* name) {
    const QByteArray dir = qgetenv("VOCATO_SCREENSHOTS");
    if (!dir.isEmpty()) {
        widget.grab().save(QString::fromLocal8Bit(dir) + "/" + name + ".png");
    }
}

} // namespace vocato::test
