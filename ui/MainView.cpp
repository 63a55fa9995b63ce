#include "MainView.h"

#include "Graf.h"

#include <QMouseEvent>
#include <QPainter>

#include <cstdio>

namespace vocato::ui {

namespace {

struct ButtonPlace {
    const char* name;
    QPoint corner;
};

// In the order of PanelButton.
constexpr std::array<ButtonPlace, 8> kButtonPlaces = {{
    {"PlayWave", {193, 159}},
    {"RecMidi", {232, 159}},
    {"StopMidi", {273, 159}},
    {"Input", {193, 125}},
    {"WaveFile", {193, 97}},
    {"Instrument", {193, 34}},
    {"Preset", {193, 62}},
    {"Panic", {400, 34}},
}};

struct TransposeSpot {
    int x0;
    float semitones;
};
constexpr std::array<TransposeSpot, 5> kTransposeSpots = {
    {{452, -24}, {482, -12}, {513, 0}, {544, 12}, {575, 24}}};
const QRect kTransposeStrip(QPoint(442, 157), QPoint(595, 177));
const QRect kSourceStrip(QPoint(162, 98), QPoint(184, 162));
const QRect kWaveFileNameArea(QPoint(205, 105), QPoint(400, 125));

// Spot ranges are open: a click exactly on a bound is outside.
bool Inside(float v, float low, float high) { return v > low && v < high; }

const QColor kCream(255, 255, 151);
const QColor kWhite(255, 255, 255);
const QColor kBlack(0, 0, 0);
constexpr uint16_t kBoldItalic = kBoldFace | kItalicFace;

struct Label {
    const char* text;
    float x, y;
    QColor first;
    uint16_t face;
    float size;
    float rotation;
};
const std::array<Label, 9> kLabels = {{
    {"Expression", 375, 190, kCream, kBoldItalic, 14, 90},
    {"Velocity", 405, 190, kCream, kBoldItalic, 14, 90},
    {"-24", 450, 190, kWhite, kBoldFace, 14, 0},
    {"-12", 482, 190, kWhite, kBoldFace, 14, 0},
    {"0", 517, 190, kWhite, kBoldFace, 14, 0},
    {"12", 546, 190, kWhite, kBoldFace, 14, 0},
    {"24", 575, 190, kWhite, kBoldFace, 14, 0},
    {"Transpose", 482, 140, kCream, kBoldItalic, 18, 0},
    {"Bend Range", 33, 140, kCream, kBoldItalic, 18, 0},
}};

} // namespace

MainView::MainView(QWidget* parent, MainViewHost& host, const Artwork& artwork, const QImage& skin)
    : QWidget(parent), host_(host), skin_(skin.convertToFormat(QImage::Format_ARGB32_Premultiplied)) {
    setObjectName(QStringLiteral("fond"));
    resize(skin_.size());
    setFocusPolicy(Qt::StrongFocus);
    canvas_ = skin_.copy();
    LoadImages(artwork);
    DrawRestingKeyboard();
    AddButtons(artwork);

    connect(&oscilloTimer_, &QTimer::timeout, this, &MainView::DrawOscilloPass);
    connect(&noteTimer_, &QTimer::timeout, this, &MainView::DrawNotePass);
    connect(&pitchTimer_, &QTimer::timeout, this, &MainView::DrawPitchPass);
    pitchTimer_.start(kPitchMs);
    noteTimer_.start(kKeyboardMs);
    oscilloTimer_.start(kOscilloscopeMs);
}

void MainView::LoadImages(const Artwork& artwork) {
    char name[8];
    for (int i = 0; i < 32; ++i) {
        std::snprintf(name, sizeof name, "m%d", i);
        meterImages_[i] = artwork.Image(name);
    }
    for (int i = 0; i < 13; ++i) {
        std::snprintf(name, sizeof name, "c%d", i);
        octaveImages_[i] = artwork.Image(name);
    }
    onImage_ = artwork.Image("On");
}

void MainView::DrawRestingKeyboard() {
    // The displays light keys on this keyboard; at rest every octave shows unlit.
    QPainter p(&canvas_);
    for (int octave = 0; octave < 7; ++octave) {
        DrawOnSkin(p, QPoint(60 + 74 * octave, 220), octaveImages_[0]);
    }
}

void MainView::AddButtons(const Artwork& artwork) {
    for (size_t i = 0; i < kButtonPlaces.size(); ++i) {
        auto* button = new PictureButton(artwork.Button(kButtonPlaces[i].name), this);
        button->setObjectName(QString::fromLatin1(kButtonPlaces[i].name));
        button->move(kButtonPlaces[i].corner);
        connect(button, &PictureButton::Message, this, &MainView::ButtonMessage);
        buttons_[i] = button;
    }
    // Nothing to play until a sound file is the source.
    Button(PanelButton::PlayWave)->SetValue(0);
    Button(PanelButton::PlayWave)->setEnabled(false);
}

void MainView::SetInstrumentName(const QString& name) {
    instrumentName_ = name.left(63);
    update(QRect(QPoint(205, 40), QPoint(400, 60)));
}

void MainView::SetPresetName(const QString& name) {
    presetName_ = name.left(63);
    update(QRect(QPoint(205, 70), QPoint(400, 90)));
}

void MainView::SetWaveFileName(const QString& name) {
    waveFileName_ = name.left(127);
    update(kWaveFileNameArea);
}

void MainView::CopySkin(QPainter& p, const QRect& area) {
    p.setCompositionMode(QPainter::CompositionMode_Source);
    p.drawImage(area.topLeft(), skin_, area);
    p.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void MainView::DrawOnSkin(QPainter& p, QPoint at, const QImage& image) {
    CopySkin(p, QRect(at, image.size()));
    p.drawImage(at, image);
}

void MainView::paintEvent(QPaintEvent*) {
    // An expose always shows both selectors as the window's state has them now.
    PaintTransposeStrip();
    PaintSourceStrip();
    QPainter p(this);
    p.drawImage(0, 0, canvas_);
    Graf graf(p);
    p.setFont(Graf::PanelFont("Baskerville", kBoldFace, 11));
    p.setPen(kBlack);
    p.drawText(QPointF(231, 50), instrumentName_);
    p.drawText(QPointF(231, 80), presetName_);
    p.drawText(QPointF(231, 115), waveFileName_);
    DrawLabels(p, graf);
}

void MainView::DrawLabels(QPainter& p, Graf& graf) {
    for (const Label& label : kLabels) {
        graf.ShadowText(label.x, label.y, QString::fromLatin1(label.text), label.first, kBlack,
                        "Baskerville", label.face, label.size, label.rotation);
    }
    p.setFont(Graf::PanelFont("Baskerville", kBoldFace, 14));
    p.setPen(kBlack);
    p.drawText(QPointF(150, 174), QString::asprintf("%2.0f", host_.PanelState().bendRange));
}

void MainView::mousePressEvent(QMouseEvent* event) {
    // A secondary button, even together with the primary one, is not a selection.
    if ((event->buttons() & Qt::RightButton) || !(event->buttons() & Qt::LeftButton)) {
        return;
    }
    TransposeClic(event->position());
    RadioButtonClic(event->position());
}

void MainView::TransposeClic(QPointF where) {
    if (!Inside(where.y(), 157, 177)) {
        return;
    }
    for (const TransposeSpot& spot : kTransposeSpots) {
        if (Inside(where.x(), spot.x0, spot.x0 + 15)) {
            host_.PanelState().transpose = spot.semitones;
            host_.SendTranspose(spot.semitones);
            AfficheTranspose();
            return;
        }
    }
}

void MainView::AfficheTranspose() {
    PaintTransposeStrip();
    update(kTransposeStrip);
}

void MainView::PaintTransposeStrip() {
    int x = 0; // a transposition that no spot shows lights the far left, as a warning
    for (const TransposeSpot& spot : kTransposeSpots) {
        if (spot.semitones == host_.PanelState().transpose) {
            x = spot.x0;
        }
    }
    QPainter p(&canvas_);
    CopySkin(p, kTransposeStrip);
    DrawOnSkin(p, QPoint(x, 157), onImage_);
}

void MainView::RadioButtonClic(QPointF where) {
    if (!Inside(where.x(), 162, 184)) {
        return;
    }
    FrontPanelState& state = host_.PanelState();
    PictureButton* play = Button(PanelButton::PlayWave);
    if (Inside(where.y(), 98, 120)) {
        if (state.fileLoaded && state.liveInput && host_.NodeFile()) {
            if (host_.ChangeProducer(Source::SoundFile)) {
                state.liveInput = false;
                play->SetValue(0);
                play->setEnabled(true);
            } else {
                // A file that cannot play is forgotten and the live input comes back.
                state.fileLoaded = false;
                SetWaveFileName(QString());
                if (host_.ChangeProducer(Source::LiveInput)) {
                    state.liveInput = true;
                    play->setEnabled(false);
                }
            }
        }
    } else if (Inside(where.y(), 126, 147)) {
        if (!state.liveInput && host_.ChangeProducer(Source::LiveInput)) {
            state.liveInput = true;
            play->setEnabled(false);
            play->SetValue(0);
        }
    } else {
        return;
    }
    AfficheRadioButton();
}

void MainView::AfficheRadioButton() {
    PaintSourceStrip();
    update(kSourceStrip);
}

void MainView::PaintSourceStrip() {
    const int y = host_.PanelState().liveInput ? 131 : 103;
    QPainter p(&canvas_);
    CopySkin(p, kSourceStrip);
    DrawOnSkin(p, QPoint(166, y), onImage_);
}

void MainView::KillOscilloThread() { oscilloTimer_.stop(); }

void MainView::StartOscilloThread() {
    if (!oscilloTimer_.isActive()) {
        oscilloTimer_.start(kOscilloscopeMs);
    }
}

} // namespace vocato::ui
