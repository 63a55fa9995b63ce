#include "AlsaMixerWeb.h"

#include "AlsaMixerElement.h"
#include "MixerWeb.h"

#include <alsa/asoundlib.h>

#include <cerrno>
#include <vector>

namespace vocato::media {
namespace {

// alsa-lib prints its own complaints to standard error; the caller shows ours in a window.
void Quiet(const char*, int, const char*, int, const char*, ...) {}

MixerWebResult Failed(MixerWebResult result, MixerWebResult::Failure failure, int status) {
    result.failure = failure;
    result.status = status;
    result.statusText = snd_strerror(status);
    return result;
}

} // namespace

MixerWebResult OpenAlsaMixerWeb(int card) {
    using Failure = MixerWebResult::Failure;
    snd_lib_error_set_handler(&Quiet);
    MixerWebResult result;
    result.card = card;
    const std::string device = "hw:" + std::to_string(card);
    snd_ctl_t* control = nullptr;
    int err = card < 0 ? -ENODEV : snd_ctl_open(&control, device.c_str(), 0);
    if (err < 0) {
        return Failed(std::move(result), Failure::NoCard, err);
    }
    snd_ctl_card_info_t* info = nullptr;
    snd_ctl_card_info_alloca(&info);
    err = snd_ctl_card_info(control, info);
    if (err >= 0) {
        result.cardName = snd_ctl_card_info_get_name(info);
    }
    snd_ctl_close(control);
    if (err < 0) {
        return Failed(std::move(result), Failure::NoInfo, err);
    }

    snd_mixer_t* opened = nullptr;
    err = snd_mixer_open(&opened, 0);
    if (err < 0) {
        return Failed(std::move(result), Failure::NoParameters, err);
    }
    std::shared_ptr<snd_mixer_t> mixer(opened, [](snd_mixer_t* m) { snd_mixer_close(m); });
    if ((err = snd_mixer_attach(opened, device.c_str())) < 0 ||
        (err = snd_mixer_selem_register(opened, nullptr, nullptr)) < 0 ||
        (err = snd_mixer_load(opened)) < 0) {
        return Failed(std::move(result), Failure::NoParameters, err);
    }
    std::vector<std::unique_ptr<MixerElement>> elements;
    for (snd_mixer_elem_t* e = snd_mixer_first_elem(opened); e != nullptr;
         e = snd_mixer_elem_next(e)) {
        if (snd_mixer_selem_is_active(e) != 0) {
            elements.push_back(std::make_unique<AlsaMixerElement>(mixer, e));
        }
    }
    auto web = std::make_unique<MixerWeb>(std::move(elements));
    if (web->ParameterCount() == 0) {
        return Failed(std::move(result), Failure::NoParameters, -ENOENT);
    }
    result.web = std::move(web);
    return result;
}

int AlsaCardOfCaptureDevice(const std::string& device) {
    snd_lib_error_set_handler(&Quiet);
    snd_pcm_t* pcm = nullptr;
    if (snd_pcm_open(&pcm, device.c_str(), SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK) < 0) {
        return -1;
    }
    snd_pcm_info_t* info = nullptr;
    snd_pcm_info_alloca(&info);
    const int card = snd_pcm_info(pcm, info) < 0 ? -1 : snd_pcm_info_get_card(info);
    snd_pcm_close(pcm);
    return card < 0 ? -1 : card;
}

} // namespace vocato::media
