#include "LiveSession.h"

#include "NodeParameters.h"
#include "Truncate.h"

#include "Clock.h"
#include "Diagnostics.h"
#include "SoundFileProducer.h"

#include <chrono>
#include <thread>

namespace vocato::app {
namespace {

NodeOptions NodeOptionsFor(media::Alert& alert, TrackerKind tracker) {
    NodeOptions options;
    options.alert = &alert;
    options.trackerFactory = TrackerFactoryFor(tracker);
    // The live audio system owns the synthesizer: it must play on the thread that renders it.
    options.internalSynth = false;
    return options;
}

} // namespace

LiveSession::LiveSession(LiveSettings settings, media::Alert& alert)
    : settings_(std::move(settings)),
      alert_(alert),
      node_(&window_, nullptr, "Vocato", settings_.channel, NodeOptionsFor(alert, settings_.tracker)),
      router_(node_),
      audio_(router_, [this] {
          LiveAudioOptions options = settings_.audio;
          options.alert = &alert_;
          return options;
      }()),
      live_(audio_) {
    node_.NodeRegistered();
    node_.AddMidiOutput(&router_);
    if (settings_.verbose) {
        node_.AddMidiOutput(&printer_);
    }
    node_.AddParameterListener(this);
}

LiveSession::~LiveSession() { Stop(); }

bool LiveSession::Start(std::string& report) {
    if (settings_.sequencer) {
        std::string error;
        sequencer_ = media::AlsaSequencerOutput::Open("Vocato", error);
        if (sequencer_ == nullptr) {
            report += "No ALSA sequencer port will be available: " + error + "\n";
        } else {
            router_.SetSequencer(sequencer_.get());
            report += "ALSA sequencer: port \"Vocato\" open\n";
        }
    }
    audio_.Open(report);
    ConnectMidiPort(report);
    ApplySettings();

    connector_ = std::make_unique<ProducerConnector>(live_, node_, &router_, alert_);
    if (audio_.HasInput()) {
        connector_->ConnectToNode(&connector_->connection.producer);
    }
    bool playing = audio_.HasInput();
    if (!settings_.file.empty()) {
        connector_->liveInput = false;
        playing = connector_->OpenFile(settings_.file);
        if (playing) {
            connector_->PlayWave();
            report += "Playing " + settings_.file + " in real time\n";
        }
    }
    media::FlushDiagnostics();
    return playing;
}

void LiveSession::ConnectMidiPort(std::string& report) {
    const std::string& name = settings_.midiPort;
    if (name.empty()) {
        return;
    }
    if (audio_.ConnectJackMidi(name) || (sequencer_ != nullptr && sequencer_->ConnectTo(name))) {
        report += "MIDI output connected to \"" + name + "\"\n";
    } else {
        report += "The MIDI port \"" + name + "\" does not exist; the output is not connected\n";
    }
}

void LiveSession::ApplySettings() {
    // Nothing runs the node yet: this thread may act as its thread.
    ApplyNodeRequests(node_, settings_);
    // A sound file never starts the node, so the ports learn the program and bend range here.
    node_.SendProgramChange(1, static_cast<short>(node_.Program()), node_.MidiClock());
    node_.SendBendRange(1, static_cast<unsigned char>(TruncToward0<int32_t>(node_.BendRange())),
                        node_.MidiClock());
}

void LiveSession::Tick(std::FILE* out, std::FILE* err) {
    node_.Maintain();
    media::FlushDiagnostics();
    std::string report;
    switch (audio_.Maintain(report)) {
    case LiveAudio::Event::Lost:
        if (connector_ != nullptr && connector_->running &&
            connector_->connection.activeProducer == connector_->connection.producer) {
            // No thread runs the node any more: end its note here.
            node_.Stop(0, true);
        }
        std::fprintf(err, "%s\n", report.c_str());
        break;
    case LiveAudio::Event::Reconnected:
        std::fprintf(err, "%s", report.c_str());
        report.clear();
        ConnectMidiPort(report);
        std::fprintf(err, "%s", report.c_str());
        xrunsReported_ = 0;
        if (connector_ != nullptr &&
            connector_->connection.activeProducer == connector_->connection.producer) {
            connector_->ChangeProducer(connector_->connection.producer);
        }
        break;
    case LiveAudio::Event::None:
        std::fprintf(err, "%s", report.c_str());
        break;
    }
    const uint64_t xruns = audio_.Xruns();
    if (xruns > xrunsReported_) {
        std::fprintf(err, "%llu xruns so far (the audio system missed a period)\n",
                     static_cast<unsigned long long>(xruns));
        xrunsReported_ = xruns;
    }
    if (settings_.verbose) {
        printer_.Print(out);
    }
}

void LiveSession::Stop() {
    if (connector_ == nullptr) {
        return;
    }
    connector_.reset();
    // Two periods, so that the note-offs reach the JACK port and the synthesizer.
    const double rate = audio_.InputRate();
    const double period = rate > 0.0 ? audio_.InputPeriod() / rate : 0.0;
    std::this_thread::sleep_for(std::chrono::duration<double>(2 * period + 0.01));
    audio_.Close();
    router_.SetSequencer(nullptr);
    sequencer_.reset();
    media::FlushDiagnostics();
}

bool LiveSession::FileFinished() const {
    if (connector_ == nullptr || !connector_->fileLoaded) {
        return false;
    }
    const auto* file = dynamic_cast<const media::SoundFileProducer*>(
        connector_->Find(connector_->connection.fileProducer));
    return file != nullptr && file->Finished();
}

void LiveSession::ParameterChanged(int64_t, int32_t id, const void*, size_t) noexcept {
    if (id == PARAM_PRESET) {
        router_.Silence();
    }
}

} // namespace vocato::app
