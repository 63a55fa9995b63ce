// The system audio input as a producer: the JACK input port or the ALSA capture device,
// whichever the live audio system opened. Without either it has no free output.
#pragma once

#include "LiveAudio.h"

#include "Producer.h"

namespace vocato::app {

class LiveInput final : public media::Producer {
public:
    explicit LiveInput(LiveAudio& audio) noexcept : audio_(audio) {}
    ~LiveInput() override;

    // Owner thread.
    bool GetFreeOutput(media::MediaSource* out) override;
    // The format is the audio system's: its rate, one channel, 16-bit, one period per buffer.
    bool Connect(media::BufferConsumer& consumer, media::MediaFormat* format) override;
    void Disconnect() override;
    int64_t Latency() const override;
    void Start(int64_t performanceTime) override;
    void Stop() override;
    void Seek(int64_t mediaTime) override;

private:
    LiveAudio& audio_;
    bool connected_ = false;
};

} // namespace vocato::app
