// One control of a sound card's mixer as the mixer web sees it: a named element with up to a
// volume and a switch per direction, or a choice among named items, each set per channel.
// The web decides how these become parameters; the sound card side only answers.
#pragma once

#include <string>
#include <vector>

namespace vocato::media {

enum class MixerControl {
    PlaybackVolume,   // raw steps
    PlaybackDecibels, // the same volume in hundredths of a dB
    PlaybackSwitch,   // 0 or 1
    CaptureVolume,
    CaptureDecibels,
    CaptureSwitch,
    Item, // index into Items()
};

class MixerElement {
public:
    virtual ~MixerElement() = default;

    // Any method: the thread that opened the mixer.
    virtual std::string Name() const = 0;
    virtual unsigned Index() const = 0;
    virtual bool Has(MixerControl control) const = 0;
    // False when the element does not tell (a volume without a dB scale).
    virtual bool Range(MixerControl control, long* minimum, long* maximum) const = 0;
    // The names of the choices; empty unless the element has an Item control.
    virtual std::vector<std::string> Items() const = 0;
    virtual int Channels(MixerControl control) const = 0;
    virtual bool Get(MixerControl control, int channel, long* value) const = 0;
    virtual bool Set(MixerControl control, int channel, long value) = 0;
};

} // namespace vocato::media
