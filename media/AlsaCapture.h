// Live input without a JACK server: an ALSA PCM (normally "default") read as signed 16-bit
// mono on a capture thread of its own, which hands every period to a handler.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

typedef struct _snd_pcm snd_pcm_t;

namespace vocato::media {

class AlsaCaptureHandler {
public:
    virtual ~AlsaCaptureHandler() = default;
    // Capture thread; the samples may be rewritten in place.
    virtual void Captured(int16_t* samples, uint32_t frames) noexcept = 0;
};

class AlsaCapture {
public:
    // Not the audio thread. Opens and configures the device; null with one sentence in
    // `error` when it cannot be opened or will not record 16-bit mono near `rate`.
    static std::unique_ptr<AlsaCapture> Open(const std::string& device, uint32_t rate,
                                             uint32_t periodFrames, std::string& error);
    ~AlsaCapture();
    AlsaCapture(const AlsaCapture&) = delete;
    AlsaCapture& operator=(const AlsaCapture&) = delete;

    // Not the capture thread. Start launches the capture thread; Stop joins it (it wakes at
    // least every 100 ms to look at the stop request).
    void Start(AlsaCaptureHandler& handler);
    void Stop();

    // Any thread.
    uint32_t SampleRate() const noexcept { return rate_; }
    uint32_t PeriodFrames() const noexcept { return period_; }
    uint64_t Overruns() const noexcept { return overruns_.load(std::memory_order_relaxed); }
    // True when the device failed for good (unplugged, its server gone).
    bool Failed() const noexcept { return failed_.load(std::memory_order_acquire); }

private:
    AlsaCapture(snd_pcm_t* pcm, uint32_t rate, uint32_t period);
    void Run(AlsaCaptureHandler* handler);

    snd_pcm_t* pcm_;
    uint32_t rate_;
    uint32_t period_;
    std::vector<int16_t> samples_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    std::atomic<bool> failed_{false};
    std::atomic<uint64_t> overruns_{0};
};

} // namespace vocato::media
