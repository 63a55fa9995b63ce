// A main view on the project's own artwork, with a host whose live values the tests set
// directly and whose actions they count.
#pragma once

#include "MainView.h"
#include "ResourceArtwork.h"

#include <QImage>
#include <QTest>

#include <atomic>
#include <memory>
#include <vector>

namespace vocato::ui::testing {

class TestHost final : public MainViewHost {
public:
    FrontPanelState& PanelState() override { return state; }
    float DisplayNote() const override { return note.load(); }
    float DisplayBend() const override { return bend.load(); }
    bool ReadOscilloscope(int16_t (&out)[128]) const override;
    void SendTranspose(float semitones) override { sentTranspose.push_back(semitones); }
    bool NodeFile() override {
        ++nodeFileCalls;
        return true;
    }
    bool ChangeProducer(Source source) override {
        producerChanges.push_back(source);
        return source == Source::LiveInput || fileConnects;
    }

    FrontPanelState state;
    std::atomic<float> note{0.0f};
    std::atomic<float> bend{8192.0f};
    bool inputConnected = true;
    int16_t samples[128] = {};
    std::vector<float> sentTranspose;
    int nodeFileCalls = 0;
    bool fileConnects = true;
    std::vector<Source> producerChanges;
};

// Does `shot` hold `image` drawn over `background` with its top-left corner at `at`? The
// artwork has soft edges, so the expected pixels are the picture composed on the skin.
bool Shows(const QImage& shot, const QImage& image, QPoint at, const QImage& background);

struct Panel {
    Panel();
    // Runs the event loop long enough for every display timer to fire.
    void Settle(int ms = 120) { QTest::qWait(ms); }
    QImage Shot() { return view->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    bool ShowsOnSkin(const QImage& image, QPoint at) { return Shows(Shot(), image, at, skin); }

    ResourceArtwork artwork;
    TestHost host;
    QImage skin;
    std::unique_ptr<MainView> view;
};

} // namespace vocato::ui::testing
