#include "WindowFixture.h"

#include <QPainter>
#include <QTest>

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

QImage WindowTest::Shot() { return Win().grab().toImage().convertToFormat(QImage::Format_RGB32); }

void WindowTest::Wait(int ms) { QTest::qWait(ms); }

void WindowTest::Click(QPoint at) {
    QTest::mouseClick(Win().View(), Qt::LeftButton, {}, at);
    Wait(20);
}

void WindowTest::SaveScreenshot(const char* name) { SaveScreenshot(Win(), name); }

void WindowTest::SaveScreenshot(QWidget& widget, const char* name) {
    const QByteArray dir = qgetenv("VOCATO_SCREENSHOTS");
    if (!dir.isEmpty()) {
        widget.grab().save(QString::fromLocal8Bit(dir) + "/" + name + ".png");
    }
}

std::vector<int> WindowTest::LitNotes(const QImage& shot) {
    if (litKeys_.empty()) {
        ResourceArtwork artwork;
        for (int octave = 0; octave < 7; ++octave) {
            const QRect area(60 + 74 * octave, 220, 74, 60);
            for (int key = 1; key <= 12; ++key) {
                QImage expected = skin_.copy(area).convertToFormat(QImage::Format_RGB32);
                QPainter(&expected).drawImage(0, 0, artwork.Image(("c" + std::to_string(key)).c_str()));
                litKeys_.push_back(expected);
            }
        }
    }
    std::vector<int> notes;
    for (int octave = 0; octave < 7; ++octave) {
        const QImage part = shot.copy(QRect(60 + 74 * octave, 220, 74, 60));
        for (int key = 1; key <= 12; ++key) {
            if (part == litKeys_[size_t(octave * 12 + key - 1)]) {
                notes.push_back(24 + 12 * octave + key - 1);
            }
        }
    }
    return notes;
}

} // namespace vocato::test
