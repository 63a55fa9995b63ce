// What the main view needs from the window that owns it: the panel state it shows and
// changes, the live values its displays poll, and the few actions its clicks trigger.
#pragma once

#include <cstdint>

namespace vocato::ui {

// The window's state that the panel shows. GUI thread only.
struct FrontPanelState {
    float transpose = 0.0f;   // semitones
    float bendRange = 6.0f;   // semitones covered by a full bend
    float midiMin = 48.0f;    // lowest note of the note range
    float midiMax = 72.0f;    // highest note of the note range
    bool liveInput = true;    // the live input, not a sound file, is the source
    bool fileLoaded = false;  // a sound file has been chosen
};

enum class Source { LiveInput, SoundFile };

class MainViewHost {
public:
    virtual ~MainViewHost() = default;

    virtual FrontPanelState& PanelState() = 0;

    // Any thread writes these; the displays read them on the GUI thread.
    virtual float DisplayNote() const = 0;  // 0 when no note sounds
    virtual float DisplayBend() const = 0;  // 0 ... 16383, 8192 at rest
    // The latest 128 input samples; false while no input is connected.
    virtual bool ReadOscilloscope(int16_t (&samples)[128]) const = 0;

    // Hands the node the panel's transposition. GUI thread.
    virtual void SendTranspose(float semitones) = 0;
    // Prepares the chosen sound file for playing; false when it cannot be read. GUI thread.
    virtual bool NodeFile() = 0;
    // Makes `source` feed the converter; false when it could not be connected. GUI thread.
    virtual bool ChangeProducer(Source source) = 0;
};

} // namespace vocato::ui
