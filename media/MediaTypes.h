// The few media records the converter node and its producers exchange: formats, the two ends
// of a connection, the node's input and the buffers that travel along it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vocato::media {

// Results of the node's connection and parameter operations.
enum Status : int32_t {
    kOk = 0,
    kError = -1,
    kNoMemory = -2,
    kBadIndex = -3,
    kBadDestination = -4,
};

enum class MediaType : int32_t { Wildcard, RawAudio };
enum class SampleFormat : int32_t { Wildcard, Int16 };

// Zero or Wildcard in a field means "any".
struct RawAudioFormat {
    double frameRate = 0.0;
    uint32_t channelCount = 0;
    SampleFormat format = SampleFormat::Wildcard;
    size_t bufferSize = 0; // bytes
};

struct MediaFormat {
    MediaType type = MediaType::Wildcard;
    RawAudioFormat raw;
};

// "raw_audio 44100 Hz, 2 ch, int16, 4096 B" with "*" for wildcards; for diagnostics.
std::string FormatToString(const MediaFormat& format);

struct MediaSource {
    int32_t port = -1;
    int32_t id = -1;
    bool operator==(const MediaSource&) const = default;
    static MediaSource Null() { return {}; }
};

struct MediaDestination {
    int32_t port = -1;
    int32_t id = -1;
    bool operator==(const MediaDestination&) const = default;
};

struct MediaInput {
    MediaSource source;
    MediaDestination destination;
    MediaFormat format;
    std::string name;
};

enum class BufferType : int32_t { RawAudio, Parameters, Other };

// A buffer stays owned by its producer; a consumer may rewrite its data in place while it
// handles it (the stereo down-mix does).
struct Buffer {
    BufferType type = BufferType::RawAudio;
    void* data = nullptr;
    size_t sizeUsed = 0;   // bytes
    int64_t startTime = 0; // microseconds
};

} // namespace vocato::media
