// Reads any sound file libsndfile knows (WAV, FLAC, Ogg/Vorbis, AIFF, ...) as interleaved
// signed 16-bit frames, whatever the stored sample format: 8-bit is scaled up, 24- and 32-bit
// keep their top 16 bits, floating point is scaled from [-1, 1] and clipped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

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

    // One thread at a time; not the audio thread (it reads the disk). Reads up to `frames`
    // frames into `interleaved` (frames x channels samples). Returns the
    // frames read; 0 at the end of the file.
    size_t Read(int16_t* interleaved, size_t frames) noexcept;

private:
    size_t ReadFloating(int16_t* interleaved, size_t frames) noexcept;

    SoundFileReader(SNDFILE* file, const SoundFileInfo& info, bool floating);

    SNDFILE* file_;
    SoundFileInfo info_;
    // Floating-point files are read as floats and scaled here: libsndfile's own conversion
    // to integers either leaves them unscaled or normalises them to the file's peak.
    bool floating_;
    std::vector<float> scratch_;
};

} // namespace vocato::media
