// The converter node: one raw-audio input, every buffer driven through the pitch tracker on
// arrival, the tracker's decisions turned into MIDI for the synthesizer, the window's displays
// and the recording; sixteen parameters applied as timed events; twenty input presets.
//
// Threads. "Node thread" is whichever thread delivers the audio (the JACK process callback,
// the sound-file producer's thread, the converting thread): it runs the buffer path, the
// timed events, Start and Stop and owns the tracker. It never allocates, locks or blocks.
// The window talks to the node only through SetParameterValue, GetParameterValue,
// SetMidiStoreBaseTime, SendAllNotesOff and Maintain.
#pragma once

#include "NodeParameters.h"
#include "TrackerStock.h"

#include "Alert.h"
#include "Clock.h"
#include "DisplaySink.h"
#include "FluidSynthSink.h"
#include "MediaTypes.h"
#include "MidiSink.h"
#include "SoundFontProbe.h"
#include "TimedEventQueue.h"

#include "PitchTracker.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocato {

class VocatoAddOn;

// What the node takes from its surroundings instead of global services.
struct NodeOptions {
    media::Clock* clock = nullptr; // null: the system clock
    media::Alert* alert = nullptr; // null: standard error
    // The "InternalSynth" preference; a process without a settings store uses 1 (on).
    bool internalSynth = true;
    std::vector<std::string> soundFonts = media::SoundFontProbeList();
    double synthRate = 44100.0;
    TrackerFactory trackerFactory = TrackerFactoryFor(kDefaultTrackerKind);
    // The engine's median and confirm switches; no parameter or preset changes them.
    int16_t median = 0;
    int16_t confirm = 0;
};

class VocatoNode {
public:
    // Not the node thread. `window` and `addOn` are not owned; `portName` is not used.
    VocatoNode(media::DisplaySink* window, VocatoAddOn* addOn, const char* portName, int8_t channel,
               NodeOptions options = {});
    // The owner stops and disconnects the node first.
    ~VocatoNode();
    VocatoNode(const VocatoNode&) = delete;
    VocatoNode& operator=(const VocatoNode&) = delete;

    // Owner's thread, once, before connecting: publishes the input.
    void NodeRegistered();

    // --- connection: the owner's thread, while no buffer is being delivered ---
    media::Status AcceptFormat(const media::MediaDestination& dest, media::MediaFormat* format);
    media::Status GetNextInput(int32_t* cookie, media::MediaInput* out);
    // Runs the engine at the format's rate (44100 Hz when the rate is a wildcard).
    media::Status Connected(const media::MediaSource& src, const media::MediaDestination& dest,
                            const media::MediaFormat& format, media::MediaInput* out);
    void Disconnected(const media::MediaSource& src, const media::MediaDestination& dest);

    // --- buffers (node thread) ---
    void BufferReceived(media::Buffer& buffer) noexcept;
    void ProducerDataStatus(const media::MediaDestination& dest, int32_t status,
                            int64_t at) noexcept;
    media::Status GetLatencyFor(const media::MediaDestination& dest, int64_t* latency) const;
    // Any thread.
    static void getPreferredFormat(media::MediaFormat& format);
    VocatoAddOn* AddOn(int32_t* internalID) const;

    // --- event looper (node thread) ---
    // Applies the timed events that are due; the audio path calls it before each buffer.
    void RunEvents() noexcept;
    void HandleEvent(const media::TimedEvent& event, int64_t lateness, bool realTimeEvent) noexcept;
    void Start(int64_t performanceTime) noexcept;
    void Stop(int64_t performanceTime, bool immediate) noexcept;

    // --- parameters ---
    // Any thread; never blocks. Unknown ids and values shorter than 4 bytes are ignored.
    void SetParameterValue(int32_t id, int64_t when, const void* value, size_t size) noexcept;
    // Any thread.
    media::Status GetParameterValue(int32_t id, int64_t* lastChange, void* value,
                                    size_t* ioSize) const noexcept;
    // Before the node runs; listeners are called on the node thread.
    void AddParameterListener(ParameterListener* listener);
    // Node thread.
    void handleParameterEvent(const media::TimedEvent& event) noexcept;

    // --- presets (node thread, or the constructor) ---
    void ChangePreset(int32_t preset) noexcept;
    void PresetBaseInstrument(int kind) noexcept;

    // --- MIDI output (node thread unless said otherwise) ---
    void SendNoteOn(char channel, unsigned char note, unsigned char velocity, double time) noexcept;
    void SendNoteOff(char channel, unsigned char note, unsigned char velocity,
                     double time) noexcept;
    void SendExpression(char channel, unsigned char value, double time) noexcept;
    void SendBend(char channel, unsigned short value, double time) noexcept;
    void SendProgramChange(char channel, short program, double time) noexcept;
    // Any thread that does not race the node thread's own sends (the owner after Stop).
    void SendAllNotesOff(bool justChannel) noexcept;
    void SendBendRange(char channel, unsigned char semitones, double time) noexcept;
    // Any thread.
    void SetMidiStoreBaseTime(int64_t time) noexcept;

    // Before the node runs: one more receiver of everything the synthesizer is sent (the
    // JACK and ALSA ports); not owned.
    void AddMidiOutput(media::MidiSink* sink);

    // Packs the left channel of interleaved stereo at the start of the buffer.
    static void StereoToMono(int16_t* samples, uint32_t frames) noexcept;
    // The same for any channel count: keeps the first channel.
    static void FirstChannelToMono(int16_t* samples, uint32_t frames, uint32_t channels) noexcept;

    // Not the node thread. Frees retired trackers and builds spares for preset changes; the
    // owner calls it regularly (a GUI timer, a host's worker) and after queuing a preset.
    void Maintain();

    // Node thread. The engine's median and confirm switches for a host that changes them
    // while the node runs (the plugin); the running tracker is told, later ones are fed them.
    void SetEngineSwitches(int16_t median, int16_t confirm) noexcept;
    // Node thread. The running tracker's decision delay in samples; 0 without a tracker.
    uint32_t DecisionDelaySamples() const noexcept;

    // --- observers (any thread) ---
    int8_t Channel() const noexcept { return fChannel; }
    int32_t Program() const noexcept { return fProgram.load(std::memory_order_relaxed); }
    float BendRange() const noexcept { return fBendRange.load(std::memory_order_relaxed); }
    double MidiClock() const noexcept { return fMidiClock.load(std::memory_order_relaxed); }
    // Node thread, from inside a send: the frame of the buffer being processed whose arrival
    // completed the decision (the last frame of its 16-sample chunk); 0 outside the buffer
    // path. MIDI ports use it to place events at their exact frame.
    uint32_t DecisionFrame() const noexcept { return fDecisionFrame; }
    // The recording stamp that an event sent now would get.
    uint32_t RecordingStampNow() const noexcept;
    // False when the tracker refused the stream's rate or there is no tracker.
    bool EngineReady() const noexcept { return fEngine != nullptr && fEngineRateAccepted; }
    media::FluidSynthSink* Synth() const noexcept { return fSynth.get(); }
    media::DisplaySink* Window() const noexcept { return fWindow; }
    const media::Clock& Clock() const noexcept { return *fClock; }

private:
    void CheckSynthFile();
    void RebuildEngine() noexcept;
    void ProcessAudio(media::Buffer& buffer) noexcept;
    void ApplyParameterData(const void* data, size_t size) noexcept;
    void Play(const media::MidiMessage& message, uint32_t stamp) noexcept;
    void SilenceAll(bool justChannel) noexcept;
    void Record(const media::MidiMessage& message, double time) noexcept;
    void Broadcast(int64_t when, int32_t id, const void* value) noexcept;
    void SetLastChange(int32_t id, int64_t when) noexcept;
    // The field behind a parameter id; null when the id names no field of that type.
    template <typename Self> static auto* FloatField(Self& self, int32_t id) noexcept;
    template <typename Self> static auto* IntField(Self& self, int32_t id) noexcept;
    int64_t NowMicros() const noexcept { return fClock->NowMicros(); }
    double NowMs() const noexcept { return static_cast<double>(NowMicros() / 1000); }

    // Parameter values are atomics: the node thread writes them, any thread may read them.
    int16_t fMedian = 0;
    int16_t fConfirm = 0;
    std::atomic<float> fLevelCeilDb{-6.0f};
    std::atomic<int32_t> fMidiMin{0};
    std::atomic<int32_t> fMidiMax{0};
    std::atomic<float> fStartLevelDb{0.0f};
    std::atomic<float> fHoldLevelDb{0.0f};
    std::atomic<float> fStartDistance{0.0f};
    std::atomic<float> fHoldDistance{0.0f};
    std::atomic<float> fLagWeight{0.0f};
    std::atomic<float> fStartPeriods{0.0f};
    std::atomic<float> fHoldPeriods{0.0f};
    std::atomic<float> fFilterSpan{0.0f};
    std::atomic<float> fContinuity{0.0f};
    int16_t fLevelMode = 0;
    std::atomic<float> fTranspose{0.0f};
    PitchTracker* fEngine = nullptr; // owned; retired through fTrackers
    WFETMidiOut fMidiOut{};
    uint16_t fLastBend = 0;
    uint16_t fLastExpression = 0;
    uint32_t fDecisionFrame = 0;
    std::atomic<double> fMidiClock{0.0};
    std::unique_ptr<media::FluidSynthSink> fSynth;
    std::atomic<double> fStoreBaseTime{0.0};
    int8_t fChannel;
    std::atomic<int32_t> fProgram{0};
    std::atomic<float> fBendRange{0.0f};
    media::DisplaySink* fWindow = nullptr;
    media::MediaFormat fFormat;
    media::OscilloscopeArea* fAudioArea = nullptr;
    media::MediaInput fInput;
    int64_t fEventLatency = 1000;
    std::atomic<int32_t> fPreset{0};
    std::array<std::atomic<int64_t>, kParameterCount> fLastChange = {};
    VocatoAddOn* fAddOn;

    // Our media layer's share of the node.
    NodeOptions fOptions;
    media::SystemClock fSystemClock;
    media::StderrAlert fStderrAlert;
    media::Clock* fClock;
    media::TimedEventQueue fEvents;
    TrackerStock fTrackers;
    double fEngineRate = 44100.0;
    double fClockStep = 16000.0 / 44100.0;
    bool fEngineRateAccepted = false;
    std::array<media::MidiSink*, 4> fOutputs = {};
    std::array<ParameterListener*, 4> fListeners = {};
};

} // namespace vocato
