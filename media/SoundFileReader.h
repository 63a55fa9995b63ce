// Reads any sound file libsndfile knows (WAV, FLAC, Ogg/Vorbis, AIFF, ...) as interleaved
// signed 16-bit frames, whatever the stored sample format: 8-bit is scaled up, 24- and 32-bit
// keep their top 16 bits, floating point is scaled from [-1, 1] and clipped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

typedef struct sf_private_tag SNDFILE;

namespace vocato::media {

struct SoundFileInfo {
    double sampleRate = 0.0;
    uint32_t channels = 0;
    int64_t frames = 0; // as the file's header declares
};

class SoundFileReader {
public:
    // Not the audio thread. Null with one sentence in `error` for a missing, unreadable,
    // empty, corrupt or unsupported file, or one without audio.
    static std::unique_ptr<SoundFileReader> Open(const std::string& path, std::string& error);
    ~SoundFileReader();

    const SoundFileInfo& Info() const noexcept { return info_; }

    // Reads up to `frames` frames into `interleaved` (frames x channels samples). Returns the
    // frames read; 0 at the end of the file.
    size_t Read(int16_t* interleaved, size_t frames) noexcept;

private:
    SoundFileReader(SNDFILE* file, const SoundFileInfo& info) noexcept
        : file_(file), info_(info) {}

    SNDFILE* file_;
    SoundFileInfo info_;
};

} // namespace vocato::media
