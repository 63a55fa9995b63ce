#include "FileConversion.h"

#include "MidiRecording.h"
#include "NodeParameters.h"
#include "VocatoNode.h"

#include "Diagnostics.h"
#include "SoundFileReader.h"
#include "StandardMidiFile.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace vocato::app {
namespace {

constexpr size_t kBufferFrames = 1024;

// The node re-bases its MIDI clock on the first buffer to the clock's time minus six seconds;
// a clock that reads six seconds there puts the first sample of the file at time 0.
constexpr int64_t kClockStartMicros = 6'000'000;

ConversionReport Failure(std::string message) {
    ConversionReport report;
    report.error = std::move(message);
    return report;
}

// At most four events per 16-sample frame, one more frame per buffer for its short tail,
// the opening events and the notes closed at the end.
size_t RecordingCapacity(int64_t frames) {
    const auto f = static_cast<size_t>(frames);
    return 4 * (f / 16 + f / kBufferFrames + 2) + kOpeningEvents + 2048;
}

void ApplySettings(VocatoNode& node, const media::Clock& clock,
                   const ConversionSettings& settings) {
    const int64_t now = clock.NowMicros();
    // The preset goes first: it rewrites the bend range.
    if (settings.preset) {
        node.SetParameterValue(PARAM_PRESET, now, &*settings.preset, 4);
    }
    if (settings.bendRange) {
        node.SetParameterValue(PARAM_BEND_RANGE, now, &*settings.bendRange, 4);
    }
    if (settings.transpose) {
        node.SetParameterValue(PARAM_TRANSPOSE, now, &*settings.transpose, 4);
    }
    if (settings.program) {
        node.SetParameterValue(PARAM_PROGRAM, now, &*settings.program, 4);
    }
    node.RunEvents();
    node.Maintain();
}

size_t CountNotes(const media::MidiStore& store) {
    size_t notes = 0;
    for (size_t i = 0; i < store.CountEvents(); ++i) {
        const media::MidiMessage& m = store.EventAt(i).message;
        notes += m.Status() == media::midi::kNoteOn && m.bytes[2] != 0;
    }
    return notes;
}

} // namespace

ConversionReport ConvertFile(const std::string& input, const std::string& output,
                             const ConversionSettings& settings,
                             const ProgressCallback& progress) {
    std::string error;
    auto reader = media::SoundFileReader::Open(input, error);
    if (reader == nullptr) {
        return Failure(error);
    }
    const media::SoundFileInfo info = reader->Info();

    media::ManualClock clock(kClockStartMicros);
    NodeOptions options;
    options.clock = &clock;
    // Nothing is heard during a conversion, so the synthesizer is not loaded.
    options.internalSynth = false;
    options.median = settings.median ? 1 : 0;
    options.confirm = settings.confirm ? 1 : 0;
    media::DisplaySink window;
    VocatoNode node(&window, nullptr, "", settings.channel, std::move(options));
    node.NodeRegistered();

    int32_t cookie = 0;
    media::MediaInput in;
    node.GetNextInput(&cookie, &in);
    media::MediaFormat format;
    format.type = media::MediaType::RawAudio;
    format.raw.frameRate = info.sampleRate;
    format.raw.channelCount = info.channels;
    format.raw.format = media::SampleFormat::Int16;
    format.raw.bufferSize = kBufferFrames * info.channels * sizeof(int16_t);
    node.AcceptFormat(in.destination, &format);
    node.Connected(media::MediaSource{0, 0}, in.destination, format, &in);
    if (!node.EngineReady()) {
        char rate[32];
        std::snprintf(rate, sizeof rate, "%g", info.sampleRate);
        return Failure(input + ": the sample rate of " + rate +
                       " Hz is outside what the pitch engine accepts (4001 to 199999 Hz)");
    }
    ApplySettings(node, clock, settings);
    node.Start(0);
    if (!ConnectMidiStore(node, window, RecordingCapacity(info.frames))) {
        return Failure(input + ": not enough memory to record its MIDI");
    }
    media::FlushDiagnostics();

    std::vector<int16_t> samples(kBufferFrames * info.channels);
    int64_t position = 0;
    for (size_t n; (n = reader->Read(samples.data(), kBufferFrames)) != 0;) {
        media::Buffer buffer;
        buffer.data = samples.data();
        buffer.sizeUsed = n * info.channels * sizeof(int16_t);
        node.BufferReceived(buffer);
        position += static_cast<int64_t>(n);
        clock.Set(kClockStartMicros +
                  static_cast<int64_t>(std::llround(position * 1e6 / info.sampleRate)));
        if (progress && info.frames > 0) {
            progress(static_cast<double>(position) / static_cast<double>(info.frames));
        }
    }
    if (position == 0) {
        return Failure(input + ": no audio could be read from the file");
    }

    media::MidiStore& store = *window.recording.Kept();
    store.CloseSoundingNotes(node.RecordingStampNow());
    node.Stop(0, true);
    window.recording.SetRecording(false);
    node.Disconnected(in.source, in.destination);
    media::FlushDiagnostics();
    if (store.Dropped() != 0) {
        return Failure(input + ": the MIDI recording ran out of room");
    }

    const media::ExportResult exported = media::ExportStandardMidiFile(store, output);
    if (!exported.ok) {
        return Failure(exported.error);
    }
    ConversionReport report;
    report.ok = true;
    report.notes = CountNotes(store);
    report.events = store.CountEvents();
    report.audioSeconds = static_cast<double>(position) / info.sampleRate;
    report.sampleRate = info.sampleRate;
    report.channels = info.channels;
    return report;
}

} // namespace vocato::app
