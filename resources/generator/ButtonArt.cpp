#include "Art.h"

#include <QLinearGradient>
#include <QPainterPath>
#include <QRadialGradient>

#include <array>

// The faces of the eight picture buttons, four per button: enabled on (held
// down, or switched on for a two-state button), enabled off, disabled on,
// disabled off. Transport buttons are 35 x 25, the others 38 x 28.
namespace art {

namespace {

const QColor kIcon{0xd8, 0xdc, 0xe3};

struct Face {
    bool on;
    bool enabled;
};

using IconPainter = void (*)(QPainter&, const QRectF&, bool on);

void DrawRecord(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center();
    if (on) {
        QRadialGradient halo(c, 9);
        halo.setColorAt(0, QColor(255, 70, 50, 150));
        halo.setColorAt(1, QColor(255, 70, 50, 0));
        p.setBrush(halo);
        p.drawEllipse(c, 9, 9);
    }
    QRadialGradient ball(c - QPointF(1.5, 1.5), 7);
    ball.setColorAt(0, on ? QColor(255, 170, 150) : QColor(0xd0, 0x5a, 0x50));
    ball.setColorAt(1, on ? QColor(240, 40, 30) : QColor(0x8a, 0x22, 0x1e));
    p.setBrush(ball);
    p.drawEllipse(c, 5.5, 5.5);
}

void DrawStop(QPainter& p, const QRectF& r, bool on) {
    p.setBrush(on ? colour::amber : kIcon);
    p.drawRoundedRect(QRectF(r.center() - QPointF(4.5, 4.5), QSizeF(9, 9)), 1.2, 1.2);
}

void DrawPlay(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center() + QPointF(1, 0);
    QPainterPath triangle;
    triangle.moveTo(c + QPointF(-4.5, -6));
    triangle.lineTo(c + QPointF(6, 0));
    triangle.lineTo(c + QPointF(-4.5, 6));
    triangle.closeSubpath();
    p.setBrush(on ? colour::amber : kIcon);
    p.drawPath(triangle);
}

// An open folder with a sound wave on it.
void DrawOpenFile(QPainter& p, const QRectF& r, bool on) {
    QPointF o = r.center() - QPointF(10, 7.5);
    QPainterPath folder;
    folder.moveTo(o + QPointF(0, 2));
    folder.lineTo(o + QPointF(6.5, 2));
    folder.lineTo(o + QPointF(8.5, 0));
    folder.lineTo(o + QPointF(20, 0));
    folder.lineTo(o + QPointF(20, 15));
    folder.lineTo(o + QPointF(0, 15));
    folder.closeSubpath();
    p.setBrush(kIcon);
    p.drawPath(folder);
    QPainterPath wave;
    wave.moveTo(o + QPointF(3, 9));
    const qreal heights[] = {-2, 3, -5, 5, -3, 4, -1.5, 1};
    for (int i = 0; i < 8; ++i) {
        wave.lineTo(o + QPointF(4.5 + i * 1.8, 9 + heights[i]));
    }
    wave.lineTo(o + QPointF(18, 9));
    p.setPen(QPen(on ? colour::amberDeep : QColor(0x2a, 0x2e, 0x35), 1.3, Qt::SolidLine,
                  Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    p.drawPath(wave);
    p.setPen(Qt::NoPen);
}

void DrawMicrophone(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center();
    QColor ink = on ? colour::amber : kIcon;
    p.setBrush(ink);
    p.drawRoundedRect(QRectF(c.x() - 3.5, c.y() - 10, 7, 12), 3.5, 3.5);
    QPainterPath holder;
    holder.moveTo(c + QPointF(-6, -3));
    holder.cubicTo(c + QPointF(-6, 5), c + QPointF(6, 5), c + QPointF(6, -3));
    holder.moveTo(c + QPointF(0, 3.2));
    holder.lineTo(c + QPointF(0, 7.5));
    holder.moveTo(c + QPointF(-4, 8));
    holder.lineTo(c + QPointF(4, 8));
    p.setPen(QPen(ink, 1.5, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    p.drawPath(holder);
    p.setPen(Qt::NoPen);
}

// Three faders at different settings: a set of stored settings.
void DrawPreset(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center();
    const qreal knobs[] = {3, -4, 1};
    for (int i = 0; i < 3; ++i) {
        qreal x = c.x() + (i - 1) * 6.5;
        p.setBrush(QColor(0x12, 0x14, 0x17));
        p.drawRoundedRect(QRectF(x - 1, c.y() - 9, 2, 18), 1, 1);
        p.setBrush(on ? colour::amber : kIcon);
        p.drawRoundedRect(QRectF(x - 3, c.y() + knobs[i] - 2, 6, 4), 1, 1);
    }
}

// Two beamed quavers.
void DrawInstrument(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center();
    QColor ink = on ? colour::amber : kIcon;
    p.setBrush(ink);
    for (QPointF head : {c + QPointF(-5, 6), c + QPointF(4, 4)}) {
        p.save();
        p.translate(head);
        p.rotate(-20);
        p.drawEllipse(QPointF(0, 0), 3.3, 2.4);
        p.restore();
    }
    p.drawRect(QRectF(c.x() - 2.3, c.y() - 8, 1.5, 14));
    p.drawRect(QRectF(c.x() + 6.7, c.y() - 10, 1.5, 14));
    QPainterPath beam;
    beam.moveTo(c + QPointF(-2.3, -8));
    beam.lineTo(c + QPointF(8.2, -10));
    beam.lineTo(c + QPointF(8.2, -7));
    beam.lineTo(c + QPointF(-2.3, -5));
    beam.closeSubpath();
    p.drawPath(beam);
}

// A warning sign: all notes off.
void DrawPanic(QPainter& p, const QRectF& r, bool on) {
    QPointF c = r.center() + QPointF(0, 0.5);
    QPainterPath sign;
    sign.moveTo(c + QPointF(0, -9));
    sign.lineTo(c + QPointF(10, 8));
    sign.lineTo(c + QPointF(-10, 8));
    sign.closeSubpath();
    p.setPen(QPen(on ? QColor(255, 120, 90) : QColor(0xe0, 0x4a, 0x3a), 1.5, Qt::SolidLine,
                  Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(on ? QColor(255, 120, 90) : QColor(0xe0, 0x4a, 0x3a));
    p.drawPath(sign);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawRoundedRect(QRectF(c.x() - 1.1, c.y() - 4.5, 2.2, 8), 1, 1);
    p.drawEllipse(c + QPointF(0, 6), 1.2, 1.2);
}

void DrawBody(QPainter& p, const QRectF& r, bool on) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0x06, 0x07, 0x09));
    p.drawRoundedRect(r, 4, 4);
    QRectF cap = r.adjusted(1, 1, -1, -1);
    QLinearGradient fill(cap.topLeft(), cap.bottomLeft());
    if (on) {
        fill.setColorAt(0, QColor(0x1e, 0x21, 0x26));
        fill.setColorAt(1, QColor(0x30, 0x34, 0x3b));
    } else {
        fill.setColorAt(0, QColor(0x55, 0x5b, 0x66));
        fill.setColorAt(1, QColor(0x2e, 0x32, 0x39));
    }
    p.setBrush(fill);
    p.drawRoundedRect(cap, 3, 3);
    QLinearGradient rim(cap.topLeft(), cap.bottomLeft());
    rim.setColorAt(0, on ? QColor(0, 0, 0, 120) : QColor(255, 255, 255, 70));
    rim.setColorAt(0.4, QColor(255, 255, 255, 0));
    p.setPen(QPen(QBrush(rim), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRoundedRect(cap.adjusted(0.5, 0.5, -0.5, -0.5), 2.5, 2.5);
    p.setPen(Qt::NoPen);
}

void DrawFace(QPainter& p, QSize size, IconPainter icon, Face face) {
    QRectF r(0, 0, size.width(), size.height());
    if (!face.enabled) {
        p.setOpacity(0.42);
    }
    DrawBody(p, r, face.on);
    // A held button sinks by one pixel.
    icon(p, r.translated(0, face.on ? 1 : 0), face.on && face.enabled);
}

} // namespace

void AddButtonFaces(std::vector<Artwork>& out) {
    struct Button {
        const char* name;
        QSize size;
        IconPainter icon;
    };
    const Button buttons[] = {
        {"RecMidi", {35, 25}, DrawRecord},    {"StopMidi", {35, 25}, DrawStop},
        {"WaveFile", {38, 28}, DrawOpenFile}, {"Input", {38, 28}, DrawMicrophone},
        {"Preset", {38, 28}, DrawPreset},     {"Instrument", {38, 28}, DrawInstrument},
        {"Panic", {38, 28}, DrawPanic},       {"PlayWave", {35, 25}, DrawPlay},
    };
    struct State {
        const char* field;
        Face face;
    };
    const State states[] = {{"_e_on", {true, true}},
                            {"_e_off", {false, true}},
                            {"_d_on", {true, false}},
                            {"_d_off", {false, false}}};
    for (const Button& button : buttons) {
        for (const State& state : states) {
            out.push_back({QStringLiteral("buttons/%1%2.png")
                               .arg(QLatin1String(button.name), QLatin1String(state.field)),
                           button.size, [button, state](QPainter& p) {
                               DrawFace(p, button.size, button.icon, state.face);
                           }});
        }
    }
}

} // namespace art
