// The skinned front panel: the skin as background, the texts and labels painted over it,
// eight picture buttons, two painted selectors (transposition and input source) and the
// live displays (oscilloscope, keyboard with bend bar, bend wheel). The meters, sliders and
// menu bar are the window's, added as children of this view.
//
// Everything runs on the GUI thread. The live displays are timers that poll the host and
// draw into the panel image, which paintEvent shows.
#pragma once

#include "Artwork.h"
#include "MainViewHost.h"
#include "PictureButton.h"

#include <QImage>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <array>

namespace vocato::ui {

class Graf;

enum class PanelButton { PlayWave, RecMidi, StopMidi, Input, WaveFile, Instrument, Preset, Panic };

class MainView : public QWidget {
    Q_OBJECT
public:
    static constexpr int kOscilloscopeMs = 20;
    static constexpr int kKeyboardMs = 40;
    static constexpr int kPitchMs = 40;

    // `skin` is the background and the source the selectors and the oscilloscope restore
    // their areas from.
    MainView(QWidget* parent, MainViewHost& host, const Artwork& artwork, const QImage& skin);

    // The texts the window writes: at most 63, 63 and 127 characters are kept.
    void SetInstrumentName(const QString& name);
    void SetPresetName(const QString& name);
    void SetWaveFileName(const QString& name);
    const QString& InstrumentName() const { return instrumentName_; }
    const QString& PresetName() const { return presetName_; }
    const QString& WaveFileName() const { return waveFileName_; }

    PictureButton* Button(PanelButton which) const { return buttons_[size_t(which)]; }

    // Hit tests and actions of the two selectors; `where` in view coordinates.
    void TransposeClic(QPointF where);
    void RadioButtonClic(QPointF where);
    // Repaint the selectors from the window's state.
    void AfficheTranspose();
    void AfficheRadioButton();

    // The oscilloscope stops by itself once the input is gone; a new connection starts it.
    void KillOscilloThread();
    void StartOscilloThread();
    bool OscilloscopeRunning() const { return oscilloTimer_.isActive(); }

    // The panel as painted so far (skin, selectors, displays), without texts and children.
    const QImage& PanelImage() const { return canvas_; }

signals:
    // A picture button was clicked; `what` is its message code.
    void ButtonMessage(uint32_t what);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void LoadImages(const Artwork& artwork);
    void AddButtons(const Artwork& artwork);
    void DrawRestingKeyboard();
    void DrawLabels(QPainter& p, Graf& graf);
    void CopySkin(QPainter& p, const QRect& area);
    void DrawOnSkin(QPainter& p, QPoint at, const QImage& image);
    void PaintTransposeStrip();
    void PaintSourceStrip();

    void DrawOscilloPass();
    void DrawNotePass();
    void DrawPitchPass();

    MainViewHost& host_;
    QImage skin_;
    QImage canvas_;
    std::array<QImage, 32> meterImages_;
    std::array<QImage, 13> octaveImages_;
    QImage onImage_;
    QString instrumentName_ = QStringLiteral("ACOUSTIC GRAND");
    QString presetName_ = QStringLiteral("Default");
    QString waveFileName_;
    std::array<PictureButton*, 8> buttons_{};

    QTimer oscilloTimer_, noteTimer_, pitchTimer_;
    // A fresh panel image holds no display yet, so both displays draw on their first pass.
    bool pitchRedraw_ = true;
    bool keyboardRedraw_ = true;
    // Keyboard pass state: what the previous pass drew.
    float lastNote_ = 0, lastBend_ = 0, lastBendRange_ = 0;
    int drawnOctave_ = 0, drawnKey_ = 1;
    float lastPitchBend_ = 0;
};

} // namespace vocato::ui
