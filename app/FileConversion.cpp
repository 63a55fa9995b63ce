#include "FileConversion.h"

#include "MidiRecording.h"
#include "VocatoNode.h"

#include "Diagnostics.h"
#include "SoundFileReader.h"
#include "StandardMidiFile.h"

#include <cmath>
#include <cstdio>
#include <new>
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

// The store starts small and grows between buffers: a buffer adds at most four events per
// 16-sample frame, its short tail included.
constexpr size_t kInitialEvents = 1 << 16;
constexpr size_t kEventsPerBuffer = 4 * (kBufferFrames / 16 + 1);

size_t CountNotes(const media::MidiStore& store) {
    size_t notes = 0;
    for (size_t i = 0; i < store.CountEvents(); ++i) {
        const media::MidiMessage& m = store.EventAt(i).message;
        notes += m.Status() == media::midi::kNoteOn && m.bytes[2] != 0;
    }
    return notes;
}

media::MediaInput ConnectFile(VocatoNode& node, const media::SoundFileInfo& info) {
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
    return in;
}

// Feeds the whole file, buffer by buffer, with the clock following the position in the file.
// Returns the frames fed.
int64_t FeedFile(VocatoNode& node, media::SoundFileReader& reader, media::ManualClock& clock,
                 media::MidiStore& store, const ProgressCallback& progress) {
    const media::SoundFileInfo& info = reader.Info();
    std::vector<int16_t> samples(kBufferFrames * info.channels);
    int64_t position = 0;
    for (size_t n; (n = reader.Read(samples.data(), kBufferFrames)) != 0;) {
        store.EnsureRoom(kEventsPerBuffer);
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
    return position;
}

ConversionReport Convert(const std::string& input, const std::string& output,
                         const ConversionSettings& settings, const ProgressCallback& progress) {
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
    options.trackerFactory = TrackerFactoryFor(settings.tracker);
    media::DisplaySink window;
    VocatoNode node(&window, nullptr, "", settings.channel, std::move(options));
    node.NodeRegistered();

    const media::MediaInput in = ConnectFile(node, info);
    if (!node.EngineReady()) {
        char rate[32];
        std::snprintf(rate, sizeof rate, "%g", info.sampleRate);
        return Failure(input + ": the sample rate of " + rate +
                       " Hz is outside what the pitch engine accepts (4001 to 199999 Hz)");
    }
    ApplyNodeRequests(node, settings);
    node.Start(0);
    if (!ConnectMidiStore(node, window, kInitialEvents)) {
        return Failure(input + ": not enough memory to record its MIDI");
    }
    media::FlushDiagnostics();

    media::MidiStore& store = *window.recording.Kept();
    const int64_t position = FeedFile(node, *reader, clock, store, progress);
    if (position == 0) {
        return Failure(input + ": no audio could be read from the file");
    }

    store.EnsureRoom(16 * 128);
    store.CloseSoundingNotes(node.RecordingStampNow());
    node.Stop(0, true);
    window.recording.SetRecording(false);
    node.Disconnected(in.source, in.destination);
    media::FlushDiagnostics();

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

} // namespace

ConversionReport ConvertFile(const std::string& input, const std::string& output,
                             const ConversionSettings& settings, const ProgressCallback& progress) {
    try {
        return Convert(input, output, settings, progress);
    } catch (const std::bad_alloc&) {
        return Failure(input + ": not enough memory to convert it");
    }
}

} // namespace vocato::app
