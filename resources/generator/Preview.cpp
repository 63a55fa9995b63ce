#include "Preview.h"

#include "Art.h"

#include <QImage>
#include <QPainter>

#include <cmath>

namespace art {

namespace {

struct PanelState {
    const char* instrument;
    const char* preset;
    const char* file;
    bool recording;
    bool playing;
    bool liveInput;
    int transposeX; // lamp column of the chosen transposition
    int note;       // MIDI note lit on the keyboard, 0 for none
    int bend;       // 0 ... 16383
    float bendRange;
    float expression;
    float velocity;
};

class Panel {
public:
    Panel(QPainter& p, const QDir& root, int scale) : p_(p), root_(root), scale_(scale) {}

    void Draw(const PanelState& s) {
        Image("images/skin", 0, 0);
        p_.fillRect(QRectF(0, 0, 600, 20), QColor(0xe6, 0xe7, 0xea));
        p_.setPen(Qt::black);
        p_.setFont(Font(12, QFont::Normal));
        p_.drawText(QPointF(8, 15), QStringLiteral("File     Options"));
        Buttons(s);
        Texts(s);
        Image("images/On", s.transposeX, 157);
        Image("images/On", 166, s.liveInput ? 131 : 103);
        Keyboard(s);
        Meters(s);
        Image("images/fader", 16 + std::floor(s.bendRange * 113 / 24), 156);
        Image(QStringLiteral("images/m%1").arg(s.bend / 512), 17, 212);
        Trace();
    }

private:
    void Image(const QString& name, qreal x, qreal y) {
        QString file = name + (scale_ == 2 ? QStringLiteral("@2x.png") : QStringLiteral(".png"));
        QImage image(root_.filePath(file));
        image.setDevicePixelRatio(scale_);
        p_.drawImage(QPointF(x, y), image);
    }

    void Buttons(const PanelState& s) {
        Image(s.playing     ? "buttons/PlayWave_e_on"
              : s.liveInput ? "buttons/PlayWave_d_off"
                            : "buttons/PlayWave_e_off",
              193, 159);
        Image(s.recording ? "buttons/RecMidi_e_on" : "buttons/RecMidi_e_off", 232, 159);
        Image("buttons/StopMidi_e_off", 273, 159);
        Image("buttons/Input_e_off", 193, 125);
        Image("buttons/WaveFile_e_off", 193, 97);
        Image("buttons/Instrument_e_on", 193, 34);
        Image("buttons/Preset_e_off", 193, 62);
        Image("buttons/Panic_e_off", 400, 34);
    }

    void ShadowText(qreal x, qreal y, const QString& text, QColor first, qreal size, bool italic,
                    int rotation) {
        QFont font(QStringLiteral("DejaVu Serif"));
        font.setPixelSize(int(size));
        font.setBold(true);
        font.setItalic(italic);
        p_.save();
        p_.setFont(font);
        p_.translate(x, y);
        p_.rotate(-rotation);
        p_.setPen(first);
        p_.drawText(QPointF(0, 0), text);
        p_.setPen(Qt::black);
        p_.drawText(QPointF(1, 0), text);
        p_.restore();
    }

    void Texts(const PanelState& s) {
        QFont font(QStringLiteral("DejaVu Serif"));
        font.setPixelSize(11);
        font.setBold(true);
        p_.setFont(font);
        p_.setPen(Qt::black);
        p_.drawText(QPointF(231, 50), s.instrument);
        p_.drawText(QPointF(231, 80), s.preset);
        p_.drawText(QPointF(231, 115), s.file);
        const QColor yellow = colour::labelYellow;
        ShadowText(375, 190, "Expression", yellow, 14, true, 90);
        ShadowText(405, 190, "Velocity", yellow, 14, true, 90);
        const int xs[] = {450, 482, 517, 546, 575};
        const char* values[] = {"-24", "-12", "0", "12", "24"};
        for (int i = 0; i < 5; ++i) {
            ShadowText(xs[i], 190, values[i], Qt::white, 14, false, 0);
        }
        ShadowText(482, 140, "Transpose", yellow, 18, true, 0);
        ShadowText(33, 140, "Bend Range", yellow, 18, true, 0);
        font.setPixelSize(14);
        p_.setFont(font);
        p_.setPen(Qt::black);
        p_.drawText(QPointF(150, 174), QString::asprintf("%2.0f", s.bendRange));
    }

    void Keyboard(const PanelState& s) {
        static const int kNotePos[12] = {5, 9, 16, 22, 26, 36, 42, 47, 52, 58, 64, 68};
        int octave = (s.note - 24) / 12;
        int key = s.note - 24 - 12 * octave + 1;
        for (int o = 0; o < 7; ++o) {
            bool lit = s.note != 0 && o == octave;
            Image(QStringLiteral("images/c%1").arg(lit ? key : 0), 60 + 74 * o, 220);
        }
        // The note-range slider as the view paints it, translucent over the skin.
        p_.fillRect(QRectF(61, 200, 516, 9), QColor(184, 184, 184, 128));
        p_.fillRect(QRectF(60 + 24 * 74 / 12.0, 200, 24 * 74 / 12.0, 9),
                    QColor(102, 152, 203, 128));
        if (s.note != 0) {
            qreal xk = 60 + 74 * octave + kNotePos[key - 1];
            qreal xb = xk + (s.bend - 8192) * 74 * s.bendRange / 98304;
            p_.fillRect(QRectF(std::min(xk, xb), 290, std::abs(xb - xk) + 1, 7),
                        QColor(255, 31, 31));
            p_.fillRect(QRectF(xk, 290, 1, 7), QColor(143, 255, 31));
        }
    }

    void Meter(qreal x, float value) {
        QRectF bar(x + 1, 91, 9, 99);
        QLinearGradient zones(bar.topLeft(), bar.bottomLeft());
        zones.setColorAt(0, Qt::red);
        zones.setColorAt(0.12, Qt::yellow);
        zones.setColorAt(0.6, Qt::green);
        p_.fillRect(bar, zones);
        p_.fillRect(QRectF(bar.left(), bar.top(), bar.width(), bar.height() * (1 - value / 127)),
                    Qt::black);
    }

    void Meters(const PanelState& s) {
        Meter(380, s.expression);
        Meter(410, s.velocity);
    }

    void Trace() {
        p_.setPen(QColor(255, 255, 31));
        for (int i = 0; i < 127; ++i) {
            auto sample = [](int n) {
                return 9000 * std::sin(n * 0.19) + 5000 * std::sin(n * 0.57);
            };
            p_.drawLine(QPointF(16.5 + i, 71 + std::floor(sample(i) / 1024)),
                        QPointF(16.5 + i, 71 + std::floor(sample(i + 1) / 1024)));
        }
    }

    QPainter& p_;
    const QDir& root_;
    int scale_;
};

void DrawGrid(QPainter& p, const QDir& root, QPointF origin) {
    QStringList names = {"On", "fader", "About", "AboutScroll"};
    for (int i = 0; i <= 12; ++i) {
        names << QStringLiteral("c%1").arg(i);
    }
    for (int i = 0; i < 32; ++i) {
        names << QStringLiteral("m%1").arg(i);
    }
    qreal x = origin.x();
    qreal y = origin.y();
    qreal rowHeight = 0;
    p.setFont(Font(10, QFont::Normal));
    auto place = [&](const QString& file, const QString& label) {
        QImage image(root.filePath(file));
        if (x + image.width() > 1220) {
            x = origin.x();
            y += rowHeight + 18;
            rowHeight = 0;
        }
        p.drawImage(QPointF(x, y), image);
        p.setPen(Qt::white);
        p.drawText(QPointF(x, y + image.height() + 12), label);
        x += std::max(image.width(), 30) + 10;
        rowHeight = std::max<qreal>(rowHeight, image.height());
    };
    for (const QString& name : names) {
        place(QStringLiteral("images/%1.png").arg(name), name);
    }
    for (const char* button : {"RecMidi", "StopMidi", "PlayWave", "WaveFile", "Input", "Preset",
                               "Instrument", "Panic"}) {
        for (const char* face : {"_e_off", "_e_on", "_d_off", "_d_on"}) {
            QString file = QStringLiteral("buttons/%1%2@2x.png").arg(button, face);
            place(file, QString(face).mid(1));
        }
    }
}

} // namespace

bool WritePreview(const QDir& root, const QString& sheetPath) {
    QImage sheet(1240, 1800, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(QColor(0x50, 0x50, 0x58));
    QPainter p(&sheet);
    p.setRenderHint(QPainter::Antialiasing);
    const PanelState idle{
        "ACOUSTIC GRAND", "Default", "", false, false, true, 513, 0, 8192, 6, 0, 0};
    const PanelState busy{"ELECTRIC GUITAR CLEAN",
                          "Female voice",
                          "melody.wav",
                          true,
                          true,
                          false,
                          544,
                          64,
                          11000,
                          12,
                          96,
                          80};
    p.save();
    p.translate(10, 10);
    Panel(p, root, 1).Draw(idle);
    p.restore();
    p.save();
    p.translate(620, 10);
    Panel(p, root, 1).Draw(busy);
    p.restore();
    p.save();
    p.translate(20, 330);
    p.scale(2, 2);
    Panel(p, root, 2).Draw(busy);
    p.restore();
    DrawGrid(p, root, QPointF(10, 960));
    p.end();
    return sheet.save(sheetPath);
}

} // namespace art
