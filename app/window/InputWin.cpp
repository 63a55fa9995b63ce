#include "InputWin.h"

#include "LiveAudio.h"

#include "ParameterWebView.h"

#include "AlsaMixerWeb.h"
#include "JackInputWeb.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace vocato {

namespace {

constexpr int kMeterWidth = 240;
// The meter's floor: quieter than this is silence for a microphone level.
constexpr int kFloorDb = -60;

// The mixer of the card that records, or why there is none.
std::unique_ptr<media::ParameterWeb> CaptureCardWeb(const std::string& device, QString& why) {
    const int card = media::AlsaCardOfCaptureDevice(device);
    if (card < 0) {
        why = QStringLiteral("The capture device \"%1\" is not a sound card of its own, so it "
                             "has no controls here; use the system's mixer.")
                  .arg(QString::fromStdString(device));
        return nullptr;
    }
    media::MixerWebResult mixer = media::OpenAlsaMixerWeb(card);
    if (mixer.web == nullptr) {
        why = QStringLiteral("The controls of card %1 cannot be shown: %2")
                  .arg(card)
                  .arg(QString::fromStdString(mixer.statusText));
    }
    return std::move(mixer.web);
}

} // namespace

InputWin::InputWin(app::LiveAudio& audio, QWidget* parent)
    : QWidget(parent, Qt::Tool), audio_(audio) {
    setWindowTitle(QStringLiteral("Vocato input"));
    setObjectName(QStringLiteral("InputWin"));
    setAttribute(Qt::WA_DeleteOnClose);
    move(250, 200);

    QString why;
    switch (audio.Active()) {
    case app::LiveAudio::Backend::Jack:
        web_ = std::make_unique<media::JackInputWeb>(*audio.Jack());
        break;
    case app::LiveAudio::Backend::Alsa:
        web_ = CaptureCardWeb(audio.Options().alsaDevice, why);
        break;
    case app::LiveAudio::Backend::None:
        why = QStringLiteral("There is no live input: neither a JACK server nor an ALSA capture "
                             "device answered. Sound files still play.");
        break;
    }

    auto* layout = new QVBoxLayout(this);
    if (web_ != nullptr) {
        view_ = new ui::ParameterWebView(*web_, this);
        layout->addWidget(view_);
    } else {
        notice_ = new QLabel(why, this);
        notice_->setWordWrap(true);
        notice_->setMinimumWidth(kMeterWidth);
        layout->addWidget(notice_);
    }
    if (audio.HasInput()) {
        meter_ = new QProgressBar(this);
        meter_->setRange(kFloorDb, 0);
        meter_->setValue(kFloorDb);
        meter_->setFormat(QStringLiteral("%v dB"));
        meter_->setMinimumWidth(kMeterWidth);
        layout->addWidget(new QLabel(QStringLiteral("Input level"), this));
        layout->addWidget(meter_);
        connect(&meterTimer_, &QTimer::timeout, this, &InputWin::Poll);
        meterTimer_.start(kMeterMs);
    }
    layout->setSizeConstraint(QLayout::SetFixedSize);
    show();
}

void InputWin::Poll() {
    const float peak = audio_.TakeInputPeak();
    const double dB = peak > 0.0f ? 20.0 * std::log10(peak) : kFloorDb;
    meter_->setValue(std::clamp(static_cast<int>(std::lround(dB)), kFloorDb, 0));
}

} // namespace vocato
