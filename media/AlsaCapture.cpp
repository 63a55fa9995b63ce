#include "AlsaCapture.h"

#include "AudioThread.h"

#include <alsa/asoundlib.h>

namespace vocato::media {
namespace {

// alsa-lib prints its own complaints to standard error; ours say the same once, in words.
void Quiet(const char*, int, const char*, int, const char*, ...) {}

std::string Reason(const std::string& device, const char* what, int err) {
    return "ALSA device \"" + device + "\": " + what + " (" + snd_strerror(err) + ")";
}

} // namespace

std::unique_ptr<AlsaCapture> AlsaCapture::Open(const std::string& device, uint32_t rate,
                                               uint32_t periodFrames, std::string& error) {
    snd_lib_error_set_handler(&Quiet);
    snd_pcm_t* pcm = nullptr;
    int err = snd_pcm_open(&pcm, device.c_str(), SND_PCM_STREAM_CAPTURE, 0);
    if (err < 0) {
        error = Reason(device, "cannot be opened for capture", err);
        return nullptr;
    }
    snd_pcm_hw_params_t* hw = nullptr;
    snd_pcm_hw_params_alloca(&hw);
    unsigned int actualRate = rate;
    snd_pcm_uframes_t period = periodFrames;
    snd_pcm_uframes_t bufferFrames = 4 * static_cast<snd_pcm_uframes_t>(periodFrames);
    if ((err = snd_pcm_hw_params_any(pcm, hw)) < 0 ||
        (err = snd_pcm_hw_params_set_access(pcm, hw, SND_PCM_ACCESS_RW_INTERLEAVED)) < 0 ||
        (err = snd_pcm_hw_params_set_format(pcm, hw, SND_PCM_FORMAT_S16)) < 0 ||
        (err = snd_pcm_hw_params_set_channels(pcm, hw, 1)) < 0 ||
        (err = snd_pcm_hw_params_set_rate_near(pcm, hw, &actualRate, nullptr)) < 0 ||
        (err = snd_pcm_hw_params_set_period_size_near(pcm, hw, &period, nullptr)) < 0 ||
        (err = snd_pcm_hw_params_set_buffer_size_near(pcm, hw, &bufferFrames)) < 0 ||
        (err = snd_pcm_hw_params(pcm, hw)) < 0) {
        snd_pcm_close(pcm);
        error = Reason(device, "will not record 16-bit mono", err);
        return nullptr;
    }
    return std::unique_ptr<AlsaCapture>(
        new AlsaCapture(pcm, actualRate, static_cast<uint32_t>(period)));
}

AlsaCapture::AlsaCapture(snd_pcm_t* pcm, uint32_t rate, uint32_t period)
    : pcm_(pcm), rate_(rate), period_(period), samples_(period) {}

AlsaCapture::~AlsaCapture() {
    Stop();
    snd_pcm_close(pcm_);
}

void AlsaCapture::Start(AlsaCaptureHandler& handler) {
    if (thread_.joinable()) {
        return;
    }
    stop_ = false;
    snd_pcm_prepare(pcm_);
    snd_pcm_start(pcm_);
    thread_ = std::thread(&AlsaCapture::Run, this, &handler);
}

void AlsaCapture::Stop() {
    stop_ = true;
    if (thread_.joinable()) {
        thread_.join();
    }
    snd_pcm_drop(pcm_);
}

void AlsaCapture::Run(AlsaCaptureHandler* handler) {
    while (!stop_.load(std::memory_order_acquire)) {
        const int ready = snd_pcm_wait(pcm_, 100);
        if (ready == 0) {
            continue; // nothing within 100 ms: look at the stop request again
        }
        snd_pcm_sframes_t n = ready < 0 ? ready : snd_pcm_readi(pcm_, samples_.data(), period_);
        if (n == -EAGAIN) {
            continue;
        }
        if (n < 0) {
            if (n == -EPIPE) {
                overruns_.fetch_add(1, std::memory_order_relaxed);
            }
            if (snd_pcm_recover(pcm_, static_cast<int>(n), 1) < 0) {
                failed_ = true;
                return;
            }
            snd_pcm_start(pcm_);
            continue;
        }
        AudioThreadScope audio;
        handler->Captured(samples_.data(), static_cast<uint32_t>(n));
    }
}

} // namespace vocato::media
