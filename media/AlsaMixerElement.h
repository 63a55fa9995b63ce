// One simple element of an ALSA card's mixer ("Master", "Capture", "Input Source").
#pragma once

#include "MixerElement.h"

#include <alsa/asoundlib.h>

#include <memory>

namespace vocato::media {

class AlsaMixerElement final : public MixerElement {
public:
    // The thread that opened the mixer. The element keeps the mixer open.
    AlsaMixerElement(std::shared_ptr<snd_mixer_t> mixer, snd_mixer_elem_t* element);

    // The thread that opened the mixer.
    std::string Name() const override;
    unsigned Index() const override;
    bool Has(MixerControl control) const override;
    bool Range(MixerControl control, long* minimum, long* maximum) const override;
    std::vector<std::string> Items() const override;
    int Channels(MixerControl control) const override;
    bool Get(MixerControl control, int channel, long* value) const override;
    bool Set(MixerControl control, int channel, long value) override;

private:
    bool DecibelRange(bool playback, long* minimum, long* maximum) const;
    const std::vector<snd_mixer_selem_channel_id_t>& ChannelIds(MixerControl control) const;

    std::shared_ptr<snd_mixer_t> mixer_;
    snd_mixer_elem_t* element_;
    std::vector<snd_mixer_selem_channel_id_t> playback_;
    std::vector<snd_mixer_selem_channel_id_t> capture_;
    std::vector<snd_mixer_selem_channel_id_t> items_;
};

} // namespace vocato::media
