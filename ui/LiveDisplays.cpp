// The three live displays of the main view. Each pass polls the values the node leaves for
// the window, draws into the panel image only when something changed, and asks for a
// repaint of its own area.
#include "Graf.h"
#include "MainView.h"
#include "NotePos.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vocato::ui {

namespace {

const QRect kOscilloscopeArea(QPoint(16, 39), QPoint(143, 112));
constexpr int kTraceLeft = 16;
constexpr int kTraceCentre = 71;
const QColor kTrace(255, 255, 31);

constexpr int kKeyboardLeft = 60;
constexpr int kKeyboardTop = 220;
constexpr float kBarTop = 290, kBarBottom = 296;
const QRect kBarArea(QPoint(0, 290), QPoint(10000, 296));
const QColor kBarErase(0, 0, 0);
const QColor kBar(255, 31, 31);
const QColor kKeyMark(143, 255, 31);

const QPoint kWheelCorner(17, 212);

int OctaveX(int octave) { return kKeyboardLeft + kOctaveWidth * octave; }

// Semitones of bend at 74/12 pixels per semitone; a full bend of +-8192 is +-range.
float BarEnd(int xk, float bend, float range) {
    return static_cast<float>(xk) + (bend - 8192.0f) * kOctaveWidth * range / 98304.0f;
}

} // namespace

void MainView::DrawOscilloPass() {
    int16_t s[128];
    if (!host_.ReadOscilloscope(s)) {
        std::puts("Exit oscillo thread");
        std::fflush(stdout);
        KillOscilloThread();
        return;
    }
    QPainter p(&canvas_);
    CopySkin(p, kOscilloscopeArea);
    Graf graf(p);
    // Each column spans the range between two successive samples; the arithmetic shift
    // maps the signed 16-bit range onto y 39 ... 102.
    for (int i = 0; i < 127; ++i) {
        graf.StrokeLine(kTraceLeft + i, kTraceCentre + (s[i] >> 10), kTraceLeft + i,
                        kTraceCentre + (s[i + 1] >> 10), kTrace);
    }
    update(kOscilloscopeArea);
}

void MainView::DrawNotePass() {
    const float note = host_.DisplayNote();
    const float bend = host_.DisplayBend();
    const float range = host_.PanelState().bendRange;
    if (note == lastNote_ && !keyboardRedraw_ && bend == lastBend_ && range == lastBendRange_) {
        return;
    }
    int octave = drawnOctave_;
    int key = drawnKey_;
    const int n = static_cast<int>(note); // truncation toward zero is intended
    QPainter p(&canvas_);
    // 24 lies on the keyboard but would index before C of the key table; it is left out.
    if ((n >= 25 && n <= 107) || n == 0) {
        keyboardRedraw_ = false;
        const int d = n - 24;
        octave = d / 12;
        key = d - 12 * octave + 1;
        // The pictures have soft edges: each goes onto clean skin, not over the last one.
        if (drawnOctave_ != octave) {
            DrawOnSkin(p, QPoint(OctaveX(drawnOctave_), kKeyboardTop), octaveImages_[0]);
        }
        DrawOnSkin(p, QPoint(OctaveX(octave), kKeyboardTop), octaveImages_[key]);
        update(QRect(OctaveX(std::min(octave, drawnOctave_)), kKeyboardTop,
                     kOctaveWidth * (std::abs(octave - drawnOctave_) + 1), 60));
    }

    Graf graf(p);
    const int oldKey = OctaveX(drawnOctave_) + NotePos[drawnKey_ - 1];
    const float oldEnd = BarEnd(oldKey, lastBend_, lastBendRange_);
    graf.FillRect({std::min<float>(oldKey, oldEnd) - 1, kBarTop, std::max<float>(oldKey, oldEnd) + 1,
                   kBarBottom},
                  kBarErase);
    const int xk = OctaveX(octave) + NotePos[key - 1];
    const float xb = BarEnd(xk, bend, range);
    graf.FillRect({std::min<float>(xk, xb), kBarTop, std::max<float>(xk, xb), kBarBottom}, kBar);
    graf.StrokeLine(xk, kBarTop, xk, kBarBottom, kKeyMark);
    update(kBarArea);

    drawnOctave_ = octave;
    drawnKey_ = key;
    lastNote_ = note;
    lastBend_ = bend;
    lastBendRange_ = range;
}

void MainView::DrawPitchPass() {
    const float b = host_.DisplayBend();
    if (b == lastPitchBend_ && !pitchRedraw_) {
        return;
    }
    // The node sends 14-bit bends only; anything else shows the nearest end of the wheel.
    const int frame = std::clamp(static_cast<int>(b) / 512, 0, 31);
    pitchRedraw_ = false;
    QPainter p(&canvas_);
    DrawOnSkin(p, kWheelCorner, meterImages_[frame]);
    update(QRect(kWheelCorner, meterImages_[frame].size()));
    lastPitchBend_ = b;
}

} // namespace vocato::ui
