#include "AlsaMixerElement.h"

#include <utility>

namespace vocato::media {
namespace {

bool IsPlayback(MixerControl control) {
    return control == MixerControl::PlaybackVolume || control == MixerControl::PlaybackDecibels ||
           control == MixerControl::PlaybackSwitch;
}

} // namespace

AlsaMixerElement::AlsaMixerElement(std::shared_ptr<snd_mixer_t> mixer, snd_mixer_elem_t* element)
    : mixer_(std::move(mixer)), element_(element) {
    for (int id = SND_MIXER_SCHN_FRONT_LEFT; id <= SND_MIXER_SCHN_LAST; ++id) {
        const auto channel = static_cast<snd_mixer_selem_channel_id_t>(id);
        if (snd_mixer_selem_has_playback_channel(element_, channel) != 0) {
            playback_.push_back(channel);
        }
        if (snd_mixer_selem_has_capture_channel(element_, channel) != 0) {
            capture_.push_back(channel);
        }
    }
    items_ = snd_mixer_selem_is_enum_capture(element_) != 0 ? capture_ : playback_;
    // Every element answers for its first channel, even one that names none.
    if (items_.empty()) {
        items_.push_back(SND_MIXER_SCHN_MONO);
    }
}

std::string AlsaMixerElement::Name() const {
    return snd_mixer_selem_get_name(element_);
}

unsigned AlsaMixerElement::Index() const {
    return snd_mixer_selem_get_index(element_);
}

bool AlsaMixerElement::Has(MixerControl control) const {
    long minimum = 0;
    long maximum = 0;
    switch (control) {
    case MixerControl::PlaybackVolume:
        return snd_mixer_selem_has_playback_volume(element_) != 0;
    case MixerControl::CaptureVolume:
        return snd_mixer_selem_has_capture_volume(element_) != 0;
    case MixerControl::PlaybackDecibels:
        return snd_mixer_selem_has_playback_volume(element_) != 0 &&
               DecibelRange(true, &minimum, &maximum);
    case MixerControl::CaptureDecibels:
        return snd_mixer_selem_has_capture_volume(element_) != 0 &&
               DecibelRange(false, &minimum, &maximum);
    case MixerControl::PlaybackSwitch:
        return snd_mixer_selem_has_playback_switch(element_) != 0;
    case MixerControl::CaptureSwitch:
        return snd_mixer_selem_has_capture_switch(element_) != 0;
    case MixerControl::Item:
        return snd_mixer_selem_is_enumerated(element_) != 0;
    }
    return false;
}

bool AlsaMixerElement::DecibelRange(bool playback, long* minimum, long* maximum) const {
    const int err = playback ? snd_mixer_selem_get_playback_dB_range(element_, minimum, maximum)
                             : snd_mixer_selem_get_capture_dB_range(element_, minimum, maximum);
    if (err < 0) {
        return false;
    }
    // A scale whose lowest step mutes starts, for a slider, at the step above it.
    if (*minimum <= SND_CTL_TLV_DB_GAIN_MUTE) {
        long rawMinimum = 0;
        long rawMaximum = 0;
        if (playback) {
            snd_mixer_selem_get_playback_volume_range(element_, &rawMinimum, &rawMaximum);
        } else {
            snd_mixer_selem_get_capture_volume_range(element_, &rawMinimum, &rawMaximum);
        }
        if (rawMinimum >= rawMaximum ||
            (playback
                 ? snd_mixer_selem_ask_playback_vol_dB(element_, rawMinimum + 1, minimum)
                 : snd_mixer_selem_ask_capture_vol_dB(element_, rawMinimum + 1, minimum)) < 0) {
            return false;
        }
    }
    return *minimum < *maximum;
}

bool AlsaMixerElement::Range(MixerControl control, long* minimum, long* maximum) const {
    switch (control) {
    case MixerControl::PlaybackVolume:
        return snd_mixer_selem_get_playback_volume_range(element_, minimum, maximum) >= 0;
    case MixerControl::CaptureVolume:
        return snd_mixer_selem_get_capture_volume_range(element_, minimum, maximum) >= 0;
    case MixerControl::PlaybackDecibels:
        return DecibelRange(true, minimum, maximum);
    case MixerControl::CaptureDecibels:
        return DecibelRange(false, minimum, maximum);
    case MixerControl::PlaybackSwitch:
    case MixerControl::CaptureSwitch:
        *minimum = 0;
        *maximum = 1;
        return true;
    case MixerControl::Item: {
        const int count = snd_mixer_selem_get_enum_items(element_);
        *minimum = 0;
        *maximum = count - 1;
        return count > 0;
    }
    }
    return false;
}

std::vector<std::string> AlsaMixerElement::Items() const {
    std::vector<std::string> names;
    if (snd_mixer_selem_is_enumerated(element_) == 0) {
        return names;
    }
    const int count = snd_mixer_selem_get_enum_items(element_);
    for (int i = 0; i < count; ++i) {
        char name[64] = {};
        if (snd_mixer_selem_get_enum_item_name(element_, static_cast<unsigned>(i), sizeof name,
                                               name) < 0) {
            return {};
        }
        names.emplace_back(name);
    }
    return names;
}

const std::vector<snd_mixer_selem_channel_id_t>&
AlsaMixerElement::ChannelIds(MixerControl control) const {
    if (control == MixerControl::Item) {
        return items_;
    }
    return IsPlayback(control) ? playback_ : capture_;
}

int AlsaMixerElement::Channels(MixerControl control) const {
    return static_cast<int>(ChannelIds(control).size());
}

bool AlsaMixerElement::Get(MixerControl control, int channel, long* value) const {
    const auto& ids = ChannelIds(control);
    if (channel < 0 || static_cast<size_t>(channel) >= ids.size()) {
        return false;
    }
    const snd_mixer_selem_channel_id_t id = ids[static_cast<size_t>(channel)];
    int err = 0;
    int on = 0;
    unsigned item = 0;
    switch (control) {
    case MixerControl::PlaybackVolume:
        return snd_mixer_selem_get_playback_volume(element_, id, value) >= 0;
    case MixerControl::CaptureVolume:
        return snd_mixer_selem_get_capture_volume(element_, id, value) >= 0;
    case MixerControl::PlaybackDecibels:
        return snd_mixer_selem_get_playback_dB(element_, id, value) >= 0;
    case MixerControl::CaptureDecibels:
        return snd_mixer_selem_get_capture_dB(element_, id, value) >= 0;
    case MixerControl::PlaybackSwitch:
        err = snd_mixer_selem_get_playback_switch(element_, id, &on);
        *value = on;
        return err >= 0;
    case MixerControl::CaptureSwitch:
        err = snd_mixer_selem_get_capture_switch(element_, id, &on);
        *value = on;
        return err >= 0;
    case MixerControl::Item:
        err = snd_mixer_selem_get_enum_item(element_, id, &item);
        *value = static_cast<long>(item);
        return err >= 0;
    }
    return false;
}

bool AlsaMixerElement::Set(MixerControl control, int channel, long value) {
    const auto& ids = ChannelIds(control);
    if (channel < 0 || static_cast<size_t>(channel) >= ids.size()) {
        return false;
    }
    const snd_mixer_selem_channel_id_t id = ids[static_cast<size_t>(channel)];
    // A dB value between the card's steps goes to the step below: never louder than asked.
    constexpr int kRoundDown = -1;
    switch (control) {
    case MixerControl::PlaybackVolume:
        return snd_mixer_selem_set_playback_volume(element_, id, value) >= 0;
    case MixerControl::CaptureVolume:
        return snd_mixer_selem_set_capture_volume(element_, id, value) >= 0;
    case MixerControl::PlaybackDecibels:
        return snd_mixer_selem_set_playback_dB(element_, id, value, kRoundDown) >= 0;
    case MixerControl::CaptureDecibels:
        return snd_mixer_selem_set_capture_dB(element_, id, value, kRoundDown) >= 0;
    case MixerControl::PlaybackSwitch:
        return snd_mixer_selem_set_playback_switch(element_, id, value != 0 ? 1 : 0) >= 0;
    case MixerControl::CaptureSwitch:
        return snd_mixer_selem_set_capture_switch(element_, id, value != 0 ? 1 : 0) >= 0;
    case MixerControl::Item:
        return value >= 0 &&
               snd_mixer_selem_set_enum_item(element_, id, static_cast<unsigned>(value)) >= 0;
    }
    return false;
}

} // namespace vocato::media
