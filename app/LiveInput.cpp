#include "LiveInput.h"

namespace vocato::app {

LiveInput::~LiveInput() { Disconnect(); }

bool LiveInput::GetFreeOutput(media::MediaSource* out) {
    if (!audio_.HasInput() || connected_) {
        return false;
    }
    *out = media::MediaSource{NodeId(), 0};
    return true;
}

bool LiveInput::Connect(media::BufferConsumer& consumer, media::MediaFormat* format) {
    if (!audio_.HasInput() || connected_) {
        return false;
    }
    format->type = media::MediaType::RawAudio;
    format->raw.frameRate = audio_.InputRate();
    format->raw.channelCount = 1;
    format->raw.format = media::SampleFormat::Int16;
    format->raw.bufferSize = audio_.InputPeriod() * sizeof(int16_t);
    audio_.SetConsumer(&consumer);
    connected_ = true;
    return true;
}

void LiveInput::Disconnect() {
    if (!connected_) {
        return;
    }
    audio_.StopFeeding();
    audio_.SetConsumer(nullptr);
    connected_ = false;
}

int64_t LiveInput::Latency() const {
    const double rate = audio_.InputRate();
    return rate > 0.0 ? static_cast<int64_t>(1e6 * audio_.InputPeriod() / rate) : 0;
}

void LiveInput::Start(int64_t) {
    if (connected_) {
        audio_.StartFeeding();
    }
}

void LiveInput::Stop() { audio_.StopFeeding(); }

void LiveInput::Seek(int64_t) {}

} // namespace vocato::app
