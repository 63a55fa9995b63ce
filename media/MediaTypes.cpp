#include "MediaTypes.h"

#include <cstdio>

namespace vocato::media {

std::string FormatToString(const MediaFormat& format) {
    if (format.type != MediaType::RawAudio) {
        return format.type == MediaType::Wildcard ? "*" : "unknown";
    }
    const RawAudioFormat& raw = format.raw;
    auto field = [](bool wild, const char* text) { return std::string(wild ? "*" : text); };
    char rate[32];
    char channels[32];
    char size[32];
    std::snprintf(rate, sizeof rate, "%g Hz", raw.frameRate);
    std::snprintf(channels, sizeof channels, "%u ch", raw.channelCount);
    std::snprintf(size, sizeof size, "%zu B", raw.bufferSize);
    return "raw_audio " + field(raw.frameRate == 0.0, rate) + ", " +
           field(raw.channelCount == 0, channels) + ", " +
           field(raw.format == SampleFormat::Wildcard, "int16") + ", " +
           field(raw.bufferSize == 0, size);
}

} // namespace vocato::media
