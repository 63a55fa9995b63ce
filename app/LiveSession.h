// Everything `vocato live` runs: the converter node, the audio system, the MIDI ports, the
// synthesizer and the producer connection, started in order with a report of each step, kept
// alive by Tick (a lost JACK server, a reconnection, xruns, the diagnostic lines) and
// stopped without leaving a note hanging.
#pragma once

#include "LiveAudio.h"
#include "LiveInput.h"
#include "LiveMidiRouter.h"
#include "NodeRequests.h"
#include "NotePrinter.h"
#include "ProducerConnector.h"

#include "VocatoNode.h"

#include "AlsaSequencerOutput.h"
#include "DisplaySink.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace vocato::app {

struct LiveSettings : NodeRequests {
    LiveAudioOptions audio;
    int8_t channel = 1;
    std::string midiPort; // the stored "MidiPortName"; empty: connect to nothing
    std::string file;     // played instead of the live input when set
    bool verbose = false;
    bool sequencer = true;
};

class LiveSession final : public ParameterListener {
public:
    // Owner thread for every operation. `alert` outlives the session.
    LiveSession(LiveSettings settings, media::Alert& alert);
    ~LiveSession() override;

    // Opens the sequencer port and the audio system, applies the settings, connects the live
    // input (or the file) and starts it. Adds one line per step to `report`. False when there
    // is nothing to play: no live input and no playable file.
    bool Start(std::string& report);

    // Every few tens of milliseconds. Writes notes (when verbose) to `out` and reports to `err`.
    void Tick(std::FILE* out, std::FILE* err);

    // Stops the producer and ends every note on the synthesizer and the ports.
    void Stop();

    bool FileFinished() const;

    VocatoNode& Node() noexcept { return node_; }
    LiveAudio& Audio() noexcept { return audio_; }
    LiveMidiRouter& Router() noexcept { return router_; }
    ProducerConnector& Connector() noexcept { return *connector_; }
    media::DisplaySink& Displays() noexcept { return window_; }
    TrackerKind Tracker() const noexcept { return settings_.tracker; }

    // Node thread: a preset change ends the notes the old settings started.
    void ParameterChanged(int64_t when, int32_t id, const void* value,
                          size_t size) noexcept override;

private:
    void ApplySettings();
    void ConnectMidiPort(std::string& report);

    LiveSettings settings_;
    media::Alert& alert_;
    media::DisplaySink window_;
    VocatoNode node_;
    LiveMidiRouter router_;
    NotePrinter printer_;
    LiveAudio audio_;
    LiveInput live_;
    std::unique_ptr<media::AlsaSequencerOutput> sequencer_;
    std::unique_ptr<ProducerConnector> connector_;
    uint64_t xrunsReported_ = 0;
};

} // namespace vocato::app
