#include "VocatoNode.h"

#include "Diagnostics.h"
#include "Truncate.h"

#include <algorithm>
#include <stdexcept>

namespace vocato {

using media::DebugOutput;
using media::Diagnostic;

VocatoNode::VocatoNode(media::DisplaySink* window, VocatoAddOn* addOn, const char*, int8_t channel,
                       NodeOptions options)
    : fMedian(options.median), fConfirm(options.confirm), fChannel(channel), fAddOn(addOn),
      fOptions(std::move(options)),
      fClock(fOptions.clock != nullptr ? fOptions.clock : &fSystemClock),
      fTrackers(fOptions.trackerFactory) {
    fTrackers.Maintain();
    CheckSynthFile();
    ChangePreset(1);
    fTrackers.Maintain();
    fWindow = window;
}

VocatoNode::~VocatoNode() {
    if (fWindow != nullptr) {
        fWindow->oscilloBuffer.SetAttached(false);
    }
    fAudioArea = nullptr;
    DebugOutput("~VocatoNode()\n");
    delete fEngine;
}

void VocatoNode::NodeRegistered() {
    fInput.destination = {0, 0};
    fInput.source = media::MediaSource::Null();
    fInput.format = fFormat;
    fInput.format.type = media::MediaType::RawAudio;
    fInput.name = "Vocato";
}

void VocatoNode::Maintain() {
    fTrackers.Maintain();
}

media::Status VocatoNode::AcceptFormat(const media::MediaDestination& dest,
                                       media::MediaFormat* format) {
    Diagnostic("Vocato::AcceptFormat:\n\tformat %s\n", media::FormatToString(*format).c_str());
    return dest == fInput.destination ? media::kOk : media::kBadDestination;
}

media::Status VocatoNode::GetNextInput(int32_t* cookie, media::MediaInput* out) {
    if (*cookie != 0) {
        return media::kBadIndex;
    }
    fInput.format.type = media::MediaType::RawAudio;
    *out = fInput;
    *cookie = 1;
    return media::kOk;
}

media::Status VocatoNode::Connected(const media::MediaSource& src,
                                    const media::MediaDestination& dest,
                                    const media::MediaFormat& format, media::MediaInput* out) {
    DebugOutput("VocatoNode::Connected:\n\tformat %s\n", media::FormatToString(format).c_str());
    DebugOutput("\tinput format %s\n", media::FormatToString(fInput.format).c_str());
    if (!(dest == fInput.destination) || !(fInput.source == media::MediaSource::Null())) {
        return media::kBadDestination;
    }
    fInput.format = format;
    fInput.source = src;
    *out = fInput;
    if (fWindow != nullptr) {
        fAudioArea = &fWindow->oscilloBuffer;
        fAudioArea->SetAttached(true);
    } else {
        Diagnostic("Pas de Win pour la memoire de l'oscillo\n");
    }
    // The engine runs at the stream's own rate; an unknown rate is taken as 44100 Hz.
    const double rate = format.raw.frameRate > 0.0 ? format.raw.frameRate : 44100.0;
    if (rate != fEngineRate) {
        fEngineRate = rate;
        fClockStep = 16000.0 / rate;
        RebuildEngine();
    }
    return media::kOk;
}

void VocatoNode::Disconnected(const media::MediaSource&, const media::MediaDestination&) {
    if (fAudioArea != nullptr) {
        fAudioArea->SetAttached(false);
        fAudioArea = nullptr;
    }
    fInput.source = media::MediaSource::Null();
}

void VocatoNode::ProducerDataStatus(const media::MediaDestination& dest, int32_t status,
                                    int64_t at) noexcept {
    if (dest == fInput.destination) {
        media::TimedEvent event;
        event.time = at;
        event.type = media::EventType::DataStatus;
        event.id = status;
        fEvents.Push(event);
    }
}

media::Status VocatoNode::GetLatencyFor(const media::MediaDestination& dest,
                                        int64_t* latency) const {
    if (!(dest == fInput.destination)) {
        return media::kBadDestination;
    }
    *latency = fEventLatency;
    return media::kOk;
}

void VocatoNode::getPreferredFormat(media::MediaFormat& format) {
    if (format.type != media::MediaType::RawAudio) {
        throw std::invalid_argument("getPreferredFormat needs a raw-audio format");
    }
    format.raw = media::RawAudioFormat{};
    format.raw.channelCount = 1;
    format.raw.bufferSize = 1024;
}

VocatoAddOn* VocatoNode::AddOn(int32_t* internalID) const {
    DebugOutput("VocatoNode::AddOn()\n");
    if (fAddOn != nullptr) {
        *internalID = 0;
    }
    return fAddOn;
}

void VocatoNode::RunEvents() noexcept {
    media::TimedEvent event;
    const int64_t now = NowMicros();
    while (fEvents.PopDue(now, event)) {
        HandleEvent(event, now - event.time, false);
    }
}

void VocatoNode::HandleEvent(const media::TimedEvent& event, int64_t, bool) noexcept {
    media::PostDiagnostic("HandleEvent \n");
    switch (event.type) {
    case media::EventType::Parameter:
        handleParameterEvent(event);
        break;
    case media::EventType::DataStatus:
        break;
    }
}

void VocatoNode::Start(int64_t) noexcept {
    fMidiClock.store(0.0, std::memory_order_relaxed);
    SetMidiStoreBaseTime(0);
    SendProgramChange(1, static_cast<short>(fProgram.load()), 0.0);
    SendBendRange(1, static_cast<unsigned char>(TruncToward0<int32_t>(fBendRange.load())), 0.0);
}

void VocatoNode::Stop(int64_t, bool) noexcept {
    SendAllNotesOff(true);
}

void VocatoNode::AddMidiOutput(media::MidiSink* sink) {
    auto free = std::find(fOutputs.begin(), fOutputs.end(), nullptr);
    if (free == fOutputs.end()) {
        throw std::length_error("the node has no room for another MIDI output");
    }
    *free = sink;
}

void VocatoNode::AddParameterListener(ParameterListener* listener) {
    auto free = std::find(fListeners.begin(), fListeners.end(), nullptr);
    if (free == fListeners.end()) {
        throw std::length_error("the node has no room for another parameter listener");
    }
    *free = listener;
}

} // namespace vocato
